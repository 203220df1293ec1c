// What a reader of the library remarks on, judged by the tool's stricter rules.
#ifndef VEXO_TOOLS_REMARKS_H
#define VEXO_TOOLS_REMARKS_H

#include <exception>
#include <functional>

#include "base/remarks.h"

using vexo_internal::Collector;
using vexo_internal::Remark;

// Judges a remark: throws a Failure, or says whether the reader goes on.
using Judge = std::function<bool(const Remark &)>;

// Runs read(collector) with remarks going to the judge. The library is compiled without exceptions, so none passes
// through it: one that the judge throws is kept, stops the reader, and goes on when the reader has returned.
template <typename Read> auto judged(const Judge &judge, Read read) {
  struct Listener {
    const Judge &judge;
    std::exception_ptr thrown;

    static bool take(void *user, const Remark &remark) noexcept {
      auto *listener = static_cast<Listener *>(user);
      try {
        return listener->thrown == nullptr && listener->judge(remark);
      } catch (...) {
        listener->thrown = std::current_exception();
        return false;
      }
    }
  };
  Listener listener = {judge, nullptr};
  const Collector collector = {Listener::take, &listener};
  auto result = read(&collector); // an owner, if it needs one
  if (listener.thrown != nullptr) {
    std::rethrow_exception(listener.thrown);
  }
  return result;
}

#endif
