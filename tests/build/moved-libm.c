/* The mathematics library with every result moved by one unit in the last place, up or down as MOVED_LIBM says. What
   the library stores must not change: it is the same with any good mathematics library. Preloaded into a program. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

static long count;

static double moved(double x) {
  count++;
  return x == 0.0 ? x : nextafter(x, *getenv("MOVED_LIBM") == 'u' ? (double)INFINITY : -(double)INFINITY);
}

__attribute__((destructor)) static void tell(void) { printf("%ld results of the mathematics library moved\n", count); }

#define ONE(name)                                                                                                      \
  double name(double x) {                                                                                              \
    static double (*real)(double);                                                                                     \
    real = real ? real : (double (*)(double))dlsym(RTLD_NEXT, #name);                                                  \
    return moved(real(x));                                                                                             \
  }
#define TWO(name)                                                                                                      \
  double name(double x, double y) {                                                                                    \
    static double (*real)(double, double);                                                                             \
    real = real ? real : (double (*)(double, double))dlsym(RTLD_NEXT, #name);                                          \
    return moved(real(x, y));                                                                                          \
  }

ONE(atan)
ONE(cbrt)
ONE(cos)
ONE(exp)
ONE(log)
ONE(sin)
TWO(atan2)
TWO(pow)

void sincos(double x, double *s, double *c) {
  *s = sin(x);
  *c = cos(x);
}
