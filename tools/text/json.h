// JSON for other programs (nlohmann-json). Single-precision values are written with the digits that identify them.
#ifndef VEXO_TOOLS_JSON_H
#define VEXO_TOOLS_JSON_H

#include <nlohmann/json.hpp>

#include "vexo-matrix.h"

// Keeps the keys in the order in which they were added.
using Json = nlohmann::ordered_json;

// The double whose shortest text is that of the float; null for a value that is not finite.
Json json_number(float value);

Json json_vector(const vexo_vector &v);
Json json_matrix(const vexo_matrix &m);

// Prints the document and a line break to standard output.
void print_json(const Json &document);

#endif
