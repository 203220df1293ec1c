// Searches a table of any values for the first that reaches y: falling and flat stretches, NaN and infinities included.
#ifndef VEXO_SEARCH_H
#define VEXO_SEARCH_H

namespace vexo_internal {

// The first i with y <= table[i], or count.
int first_reached(const float *table, int count, float y);

// first_reached() for many y above -infinity in one table: the highest value so far rises whatever the table does, and
// y reaches it where it reaches the table. A search walks from where the last one ended.
class FirstReach {
public:
  static const int kTogether = 8;

  FirstReach(const float *table, int count);

  int first(float y) {
    while (at_ < nodes_ && !(y <= highest_[at_])) {
      at_++;
    }
    while (at_ > 0 && y <= highest_[at_ - 1]) {
      at_--;
    }
    return stride_ == 1 ? at_ : within_node(y);
  }

  // The same for several y, soonest where all are reached within a few entries.
  void first_of_each(const float (&y)[kTogether], int (&found)[kTogether]);

private:
  int within_node(float y) const;

  static const int kNodes = 1024; // more entries share nodes
  const float *table_;
  int count_;
  int stride_; // entries a node
  int nodes_;
  int at_ = 0;
  float highest_[kNodes]; // value up to the end of each node; -infinity where there are only NaN
};

} // namespace vexo_internal

#endif
