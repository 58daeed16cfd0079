// Colours and mode of the texts of a drawing context, saved and put back.
#include "../host/HostTest.h"

namespace tavi::test {
namespace {

constexpr int32_t kTransparent = 1;
constexpr int32_t kOpaque = 2;

class TextState : public HostTest {
 protected:
  Bitmap bitmap_{4, 4, 24};
  Context context_{bitmap_};
};

TEST_F(TextState, SettersReturnTheFormerValue) {
  EXPECT_EQ(SetTextColor(context_.get(), 0x112233), 0u) << "black at first";
  EXPECT_EQ(SetTextColor(context_.get(), 0x445566), 0x112233u);
  EXPECT_EQ(SetBkColor(context_.get(), 0x112233), 0xFFFFFFu) << "white at first";
  EXPECT_EQ(SetBkColor(context_.get(), 0), 0x112233u);
  EXPECT_EQ(SetBkMode(context_.get(), kTransparent), kOpaque) << "opaque at first";
  EXPECT_EQ(SetBkMode(context_.get(), kOpaque), kTransparent);
  EXPECT_EQ(SetBkMode(context_.get(), 3), 0);
  EXPECT_EQ(SetBkMode(context_.get(), kTransparent), kOpaque) << "an unknown mode changes nothing";
}

TEST_F(TextState, RestoringGoesBackToTheNumberedState) {
  SetTextColor(context_.get(), 1);
  EXPECT_EQ(SaveDC(context_.get()), 1);
  SetTextColor(context_.get(), 2);
  SetBkColor(context_.get(), 2);
  SetBkMode(context_.get(), kTransparent);
  EXPECT_EQ(SaveDC(context_.get()), 2);
  SetTextColor(context_.get(), 3);
  EXPECT_EQ(SaveDC(context_.get()), 3);
  EXPECT_EQ(RestoreDC(context_.get(), 2), 1);
  EXPECT_EQ(RestoreDC(context_.get(), 3), 0) << "later states are forgotten";
  EXPECT_EQ(RestoreDC(context_.get(), 2), 0) << "and so is the one put back";
  EXPECT_EQ(SetTextColor(context_.get(), 0), 2u);
  EXPECT_EQ(SetBkColor(context_.get(), 0), 2u);
  EXPECT_EQ(SetBkMode(context_.get(), kOpaque), kTransparent);
  EXPECT_EQ(RestoreDC(context_.get(), 1), 1);
  EXPECT_EQ(SetTextColor(context_.get(), 0), 1u);
  EXPECT_EQ(SetBkColor(context_.get(), 0), 0xFFFFFFu);
  EXPECT_EQ(SaveDC(context_.get()), 1) << "numbers start again";
}

TEST_F(TextState, StatesThatAreNotThere) {
  for (const int32_t state : {0, 1, -1, INT32_MIN, INT32_MAX}) EXPECT_EQ(RestoreDC(context_.get(), state), 0);
}

// Whoever saves without end gets no number in the end; the context releases what it has.
TEST_F(TextState, TheStackIsBounded) {
  int32_t last = 0;
  for (int32_t i = 1; i <= 1000; ++i) {
    const int32_t number = SaveDC(context_.get());
    if (number == 0) break;
    EXPECT_EQ(number, i);
    last = number;
  }
  EXPECT_GE(last, 16);
  EXPECT_LT(last, 1000);
  EXPECT_EQ(RestoreDC(context_.get(), last), 1);
  EXPECT_EQ(SaveDC(context_.get()), last);
}

TEST_F(TextState, NoContext) {
  EXPECT_EQ(SaveDC(nullptr), 0);
  EXPECT_EQ(RestoreDC(nullptr, 1), 0);
  EXPECT_EQ(SetTextColor(nullptr, 0), UINT32_MAX);
  EXPECT_EQ(SetBkColor(nullptr, 0), UINT32_MAX);
  EXPECT_EQ(SetBkMode(nullptr, kOpaque), 0);
}

}  // namespace
}  // namespace tavi::test
