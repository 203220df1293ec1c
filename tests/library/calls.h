// The functions of the library that compute with numbers, as calls with a row of numbers as arguments and a row of
// numbers as results. The same calls are compared with known results, make the test vectors, take arguments that no
// caller means, and run in several threads.
#ifndef VEXO_TESTS_CALLS_H
#define VEXO_TESTS_CALLS_H

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "lut3d.h"
#include "vexo.h"

using Numbers = std::vector<double>; // floats and integers, exactly

// Where the arguments of calls come from: usual ones at random, the same in every run.
class Source {
public:
  explicit Source(float low = 0.0F, float high = 1.0F, int first = 0, int last = 3)
      : low_(low), high_(high), first_(first), last_(last) {}
  virtual ~Source() = default;
  Source(const Source &) = default;

  int below(int n) { return static_cast<int>(bits_() % static_cast<unsigned>(n)); }
  float between(float low, float high) { return low + (high - low) * static_cast<float>(bits_()) / 4294967296.0F; }

  virtual float real() { return between(low_, high_); }
  virtual int whole(int kinds) { return kinds > 0 ? below(kinds) : first_ + below(last_ - first_ + 1); }
  virtual std::vector<float> table() { return table(2 + below(40)); }
  virtual vexo_gamma curve();
  // Values of 0 to 1 that rise, have steps, are noisy, fall or jump.
  std::vector<float> table(int size);

protected:
  virtual int odd_values() { return 0; } // in a table

private:
  std::mt19937 bits_;
  float low_, high_;
  int first_, last_;
};

// Arguments that no caller means among the usual ones.
class Awkward : public Source {
public:
  explicit Awkward(const Source &usual) : Source(usual) {}
  float real() override;
  int whole(int kinds) override;
  std::vector<float> table() override { return Source::table(below(4) == 0 ? below(3) : 2 + below(40)); }
  vexo_gamma curve() override { // offsets would show the last bits of the mathematics library
    return below(2) == 0 ? Source::curve() : vexo_gamma{real(), real(), real(), 0.0F};
  }

protected:
  int odd_values() override { return below(8); }
};

// An argument: a number. What a call changes goes to its results.
template <typename T> struct Argument {
  explicit Argument(Source &source) {
    if constexpr (std::is_floating_point_v<T>) {
      value = source.real();
    } else {
      value = static_cast<T>(source.whole(std::is_enum_v<T> ? 8 : 0));
    }
  }
  T pass() { return value; }
  void append_to(Numbers *) const {}
  T value;
};

// A record of floats, or an array of three.
template <typename Record> struct Argument<Record *> {
  explicit Argument(Source &source) {
    for (float &x : value) {
      x = source.real();
    }
  }
  Record *pass() { return reinterpret_cast<Record *>(value); }
  void append_to(Numbers *results) const {
    if (!std::is_const_v<Record>) {
      results->insert(results->end(), std::begin(value), std::end(value));
    }
  }
  float value[std::is_same_v<std::remove_const_t<Record>, float> ? 3 : sizeof(Record) / 4];
};

// A table, with a value behind its end that no call may change.
template <> struct Argument<vexo_lut *> {
  explicit Argument(Source &source) : values(source.table()) { values.push_back(kBehind); }
  vexo_lut *pass() {
    lut = {static_cast<int>(values.size()) - 1, values.data()};
    return &lut;
  }
  void append_to(Numbers *results) const {
    results->insert(results->end(), values.begin(), values.end() - (values.back() == kBehind ? 1 : 0));
  }
  static constexpr float kBehind = -7777.0F;
  std::vector<float> values;
  vexo_lut lut = {};
};
template <> struct Argument<const vexo_lut *> : Argument<vexo_lut *> {
  using Argument<vexo_lut *>::Argument;
  void append_to(Numbers *) const {}
};

// Three tables of one size.
struct Luts {
  explicit Luts(int size = 1024, float value = -7.0F) : d(3 * static_cast<size_t>(size), value) {
    for (int c = 0; c < 3; c++) {
      lut[c] = vexo_lut{size, d.data() + static_cast<ptrdiff_t>(c) * size};
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  std::vector<float> d;
  vexo_lut lut[3];
};

// The same over an argument.
template <> struct Argument<Luts *> {
  explicit Argument(Source &source);
  Luts *pass() { return luts.get(); }
  void append_to(Numbers *results) const { results->insert(results->end(), luts->d.begin(), luts->d.end()); }
  std::unique_ptr<Luts> luts;
};

template <> struct Argument<vexo_gamma *> {
  explicit Argument(Source &source) : curve(source.curve()) {}
  vexo_gamma *pass() { return &curve; }
  void append_to(Numbers *) const {}
  vexo_gamma curve;
};

// A panel whose tables have any shape.
template <> struct Argument<vexo *> {
  explicit Argument(Source &source);
  vexo *pass() { return panel.get(); }
  void append_to(Numbers *) const {}
  std::unique_ptr<vexo> panel = std::make_unique<vexo>();
};

// The readings of a panel near a real one, or far from it.
template <> struct Argument<vexo_lcnr *> {
  explicit Argument(Source &source);
  vexo_lcnr *pass() { return &lcnr; }
  void append_to(Numbers *) const {}
  vexo_lcnr lcnr;
};

// A 3D LUT of numbers from a source.
Lut any_lut(Source &source, int size);

inline void append(Numbers *results, double result) { results->push_back(result); }
inline void append(Numbers *results, const Numbers &more) { results->insert(results->end(), more.begin(), more.end()); }

// Calls a function with arguments from a source. Gives its result, then what is in its records.
template <typename Result, typename... Types> auto calling(Result (*function)(Types...)) {
  return [function](Source &source) {
    std::tuple<Argument<Types>...> arguments{Argument<Types>(source)...}; // in this order
    Numbers results;
    std::apply(
        [&](auto &...argument) {
          if constexpr (std::is_void_v<Result>) {
            function(argument.pass()...);
          } else {
            append(&results, function(argument.pass()...));
          }
          (argument.append_to(&results), ...);
        },
        arguments);
    return results;
  };
}

struct Call {
  std::string name;
  std::function<Numbers(Source &)> run;
  Source usual; // arguments
  int runs;     // of a test
};

const std::vector<Call> &calls();

// The name of a call, the digest of what it gives for usual arguments, and for awkward ones.
std::string digests(const Call &call);

#endif
