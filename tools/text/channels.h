// What messages and charts call the channels and the tristimulus components.
#ifndef VEXO_TOOLS_CHANNELS_H
#define VEXO_TOOLS_CHANNELS_H

inline const char *const kChannels[3] = {"red", "green", "blue"};
inline const char *const kComponents[3] = {"X", "Y", "Z"};

#endif
