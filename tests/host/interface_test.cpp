// The host interface that applications are compiled against: the order of the meters' virtual
// operations, strings and texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "sarnum/host/host.h"

namespace {

#if !defined(_MSC_VER)
/// Slots, from 1, of virtual operations. In the C++ ABI of every platform but Microsoft's, a
/// pointer to one holds its offset in the table of virtual functions, on most of them plus 1.
template <class... Operations>
std::vector<int> slots(Operations... operations) {
  const auto slot = [](auto operation) {
    std::uintptr_t offset = 0;
    std::memcpy(&offset, &operation, sizeof offset);
    return static_cast<int>(offset / sizeof(void*)) + 1;
  };
  return {slot(operations)...};
}

template <class M>
std::vector<int> shared_slots() {
  return slots(&M::SetCaption, &M::SetText, &M::SetPos, &M::SetRange, &M::GetRange, &M::GetPos,
               &M::SetStep, &M::StepIt, &M::GetCaption, &M::GetText, &M::GetHWND, &M::GetCWND);
}

TEST(Meter, OperationsStandInTheStatedSlots) {
  using ::testing::ElementsAre;
  using M = CMeterInfo;
  EXPECT_THAT(shared_slots<M>(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_EQ(shared_slots<CCustomMeterInfo>(), shared_slots<M>());
  EXPECT_THAT(slots(&M::DeleteOnClose, &M::IsDeleteOnClose, &M::CancelMode, &M::ThreadParent,
                    &M::Max, &M::ShowCancel, &M::ShowOK, &M::ShowWindow, &M::SendMessageA,
                    &M::ResShow, &M::ShowResButton),
              ElementsAre(13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23));
}
#endif

TEST(Meter, DefaultsDoNothing) {
  CMeterInfo meter;
  int untouched = 7;
  meter.GetPos(&untouched);
  meter.GetRange(&untouched, nullptr);
  EXPECT_EQ(untouched, 7);
  EXPECT_EQ(meter.SetStep(3), 0);
}

template <class A, class B>
std::vector<bool> comparisons(const A& a, const B& b) {
  return {a == b, a != b, a<b, a> b, a <= b, a >= b};
}

TEST(String, JoinsAndComparesByValue) {
  EXPECT_TRUE(CString(nullptr).IsEmpty());
  for (const std::string a : {"", "a", "ab", "b"}) {
    for (const std::string b : {"", "a", "ab", "abc", "b"}) {
      const CString left(a.c_str());
      const CString right(b.c_str());
      for (const CString& joined : {left + right, left + b.c_str(), a.c_str() + right}) {
        EXPECT_EQ(std::string(joined), a + b);
        EXPECT_EQ(joined.GetLength(), static_cast<int>(a.size() + b.size()));
      }
      EXPECT_EQ(comparisons(left, right), comparisons(a, b)) << a << ", " << b;
      EXPECT_EQ(comparisons(left, b.c_str()), comparisons(a, b)) << a << ", " << b;
      EXPECT_EQ(comparisons(a.c_str(), right), comparisons(a, b)) << a << ", " << b;
    }
  }
}

TEST(Resources, OnlyTheTransformsHaveTexts) {
  EXPECT_FALSE(GetResourceString(700).IsEmpty());
  EXPECT_TRUE(GetResourceString(700) != GetResourceString(701));
  EXPECT_TRUE(GetResourceString(699).IsEmpty() && GetResourceString(702).IsEmpty());
}

}  // namespace
