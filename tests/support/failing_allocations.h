// Makes allocations fail: the n-th from now, once or from then on.
#pragma once

/// While one of these lives, allocations of this thread are counted and the chosen one fails.
class FailingAllocations {
 public:
  enum class Failing { once, persistently };

  /// @param nth  counted from 1; 0 only counts.
  explicit FailingAllocations(int nth, Failing failing = Failing::once);
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
  ~FailingAllocations();

  /// Allocations asked for so far.
  int count() const { return asked_; }

  /// Counts one more of this thread, if one of these lives in it, and tells whether it fails.
  static bool one_more_fails();

 private:
  Failing failing_;
  int failing_number_;
  int asked_ = 0;
};
