// Number text in the "C" locale, whatever locale the application has set.
#ifndef VEXO_LOCALE_H
#define VEXO_LOCALE_H

#include <locale.h>

namespace vexo_internal {

// Gives the calling thread the "C" locale for the guard's lifetime: printf and scanf then use a decimal point. The C
// library hands out its built-in "C" locale without allocating; should it refuse, the thread's locale stays.
class NumberLocale {
public:
  NumberLocale() : c_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(c_)) {}
  ~NumberLocale() {
    uselocale(before_);
    if (c_ != nullptr) {
      freelocale(c_);
    }
  }
  NumberLocale(const NumberLocale &) = delete;
  NumberLocale &operator=(const NumberLocale &) = delete;

private:
  locale_t c_;
  locale_t before_;
};

} // namespace vexo_internal

#endif
