// The host interface that applications are compiled against: the order of the meters' virtual
// operations, strings and texts.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "sarnum/host/host.h"

namespace {

#if !defined(_MSC_VER)
/// Slot, from 1, of a virtual operation. In the C++ ABI of every platform but Microsoft's, a
/// pointer to one holds its offset in the table of virtual functions, on most of them plus 1.
template <class Operation>
int slot(Operation operation) {
  static_assert(sizeof operation >= sizeof(std::uintptr_t));
  std::uintptr_t offset = 0;
  std::memcpy(&offset, &operation, sizeof offset);
  return static_cast<int>(offset / sizeof(void*)) + 1;
}

template <class Meter>
void expect_shared_slots() {
  EXPECT_EQ(slot(&Meter::SetCaption), 1);
  EXPECT_EQ(slot(&Meter::SetText), 2);
  EXPECT_EQ(slot(&Meter::SetPos), 3);
  EXPECT_EQ(slot(&Meter::SetRange), 4);
  EXPECT_EQ(slot(&Meter::GetRange), 5);
  EXPECT_EQ(slot(&Meter::GetPos), 6);
  EXPECT_EQ(slot(&Meter::SetStep), 7);
  EXPECT_EQ(slot(&Meter::StepIt), 8);
  EXPECT_EQ(slot(&Meter::GetCaption), 9);
  EXPECT_EQ(slot(&Meter::GetText), 10);
  EXPECT_EQ(slot(&Meter::GetHWND), 11);
  EXPECT_EQ(slot(&Meter::GetCWND), 12);
}

TEST(Meter, OperationsStandInTheStatedSlots) {
  expect_shared_slots<CMeterInfo>();
  expect_shared_slots<CCustomMeterInfo>();
  EXPECT_EQ(slot(&CMeterInfo::DeleteOnClose), 13);
  EXPECT_EQ(slot(&CMeterInfo::IsDeleteOnClose), 14);
  EXPECT_EQ(slot(&CMeterInfo::CancelMode), 15);
  EXPECT_EQ(slot(&CMeterInfo::ThreadParent), 16);
  EXPECT_EQ(slot(&CMeterInfo::Max), 17);
  EXPECT_EQ(slot(&CMeterInfo::ShowCancel), 18);
  EXPECT_EQ(slot(&CMeterInfo::ShowOK), 19);
  EXPECT_EQ(slot(&CMeterInfo::ShowWindow), 20);
  EXPECT_EQ(slot(&CMeterInfo::SendMessageA), 21);
  EXPECT_EQ(slot(&CMeterInfo::ResShow), 22);
  EXPECT_EQ(slot(&CMeterInfo::ShowResButton), 23);
}
#endif

TEST(Meter, DefaultsDoNothing) {
  CMeterInfo meter;
  int untouched = 7;
  meter.SetRange(0, 5);
  meter.StepIt();
  meter.GetPos(&untouched);
  meter.GetRange(&untouched, nullptr);
  EXPECT_EQ(untouched, 7);
  EXPECT_EQ(meter.SetStep(3), 0);
  EXPECT_TRUE(meter.GetText().IsEmpty());
  EXPECT_EQ(meter.GetHWND(), nullptr);
  EXPECT_EQ(meter.GetCWND(), nullptr);
}

TEST(String, ConvertsJoinsAndComparesByValue) {
  const char storage[] = {'a', 'b', '\0'};
  const CString ab(storage);
  const CString same("ab");
  EXPECT_STREQ(ab, "ab");
  EXPECT_NE(static_cast<const char*>(ab), storage);
  EXPECT_EQ(ab.GetLength(), 2);
  EXPECT_TRUE(CString(nullptr).IsEmpty());

  EXPECT_STREQ(ab + "...", "ab...");
  EXPECT_STREQ("..." + ab, "...ab");
  EXPECT_STREQ(ab + same, "abab");
  CString tail = ab;
  tail += "c";
  EXPECT_STREQ(tail, "abc");
  EXPECT_STREQ(ab, "ab");

  EXPECT_TRUE(ab == same && ab == "ab" && "ab" == ab && !(ab != same) && ab != "b" && "b" != ab);
  EXPECT_TRUE(ab < tail && ab < "b" && "aa" < ab && ab > "a" && tail > ab && "b" > ab);
  EXPECT_TRUE(ab <= same && ab <= "ab" && "ab" <= ab && ab >= same && ab >= "a" && "b" >= ab);
  EXPECT_FALSE(tail <= ab || tail <= "ab" || "b" <= ab || ab >= tail || ab >= "b" || "a" >= ab);
}

TEST(Resources, OnlyTheTransformsHaveTexts) {
  EXPECT_FALSE(GetResourceString(700).IsEmpty());
  EXPECT_FALSE(GetResourceString(701).IsEmpty());
  EXPECT_TRUE(GetResourceString(700) != GetResourceString(701));
  EXPECT_TRUE(GetResourceString(699).IsEmpty());
  EXPECT_TRUE(GetResourceString(0).IsEmpty());
}

}  // namespace
