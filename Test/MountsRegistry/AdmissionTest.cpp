#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Controllerdb/MountsRegistry/Admission.h"

namespace Controller {
namespace {

TEST(AdmissionTest, EachHasATextOfItsOwn) {
  std::set<std::string> texts;
  for (int value = 0; value <= static_cast<int>(Admission::notReady); ++value) {
    std::string out;
    appendTo(out, static_cast<Admission>(value));
    EXPECT_NE(out, "unknown");
    texts.insert(out);
  }
  EXPECT_EQ(texts.size(), static_cast<std::size_t>(Admission::notReady) + 1);
  EXPECT_STREQ(text(static_cast<Admission>(static_cast<int>(Admission::notReady) + 1)), "unknown");
}

}  // namespace
}  // namespace Controller
