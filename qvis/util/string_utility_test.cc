// Tests of CQVIS_StringUtility: classification and both families of
// trailing-number edits.
#include "qvis/util/string_utility.h"

#include <climits>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace su = CQVIS_StringUtility;

TEST(StringUtilityTest, StyleClassification) {
  const struct {
    const char* s;
    int style;
  } rows[] = {
      {"", 0},     {"--", 0},   {" .+", 0}, {"abc", 2},  {"123", 1},
      {"a1", 3},   {"-12.5", 1}, {"1 2", 1}, {"PAD-", 2}, {"12a", 3},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(su::GetStringStyle(r.s), r.style) << "'" << r.s << "'";
  }
  EXPECT_EQ(su::GetStringStyle(nullptr), 0);
  // Bytes above 0x7F are neither letters nor digits in the C locale.
  EXPECT_EQ(su::GetStringStyle("\xC3\xA9"), 0);

  EXPECT_FALSE(su::IsNumber("12a"));
  EXPECT_TRUE(su::IsNumberString("12a"));
  EXPECT_TRUE(su::IsNumber("-3.5"));
  EXPECT_FALSE(su::IsNumberString("123"));
  EXPECT_FALSE(su::IsNumber(""));
}

// The buffer family: rewritten text and return code per case.
TEST(StringUtilityTest, BufferFamilySetsAndIncrementsTrailingNumber) {
  const struct {
    bool increment;  // IncValueInString, else SetValueInString
    const char* in;
    int arg;
    const char* out;
    int ret;
  } rows[] = {
      {false, "PAD12", 7, "PAD7", 1},
      {false, "PAD", 7, "PAD1", 0},
      {false, "42", 7, "7", 1},
      {false, "-3.5", 9, "9", 1},  // numeric style: replaced whole
      {false, "", 4, "1", 0},
      {false, "A1B", 4, "A1B1", 0},
      {true, "R9", 1, "R10", 1},
      {true, "A1B", 1, "A1B1", 0},  // the digit run is not at the end
      {true, "A009", 1, "A10", 1},
      {true, "42", -50, "-8", 1},
      {true, "-12.5", 2, "-10", 1},  // atoi of the whole buffer
      {true, "V1.2", 5, "V1.7", 1},
      {true, "X", 5, "X1", 0},       // increment unused when appending
  };
  for (const auto& r : rows) {
    char buf[64];
    std::strcpy(buf, r.in);
    const int ret = r.increment ? su::IncValueInString(buf, sizeof buf, r.arg)
                                : su::SetValueInString(buf, sizeof buf, r.arg);
    EXPECT_STREQ(buf, r.out) << r.in;
    EXPECT_EQ(ret, r.ret) << r.in;
  }
}

TEST(StringUtilityTest, BufferFamilyRespectsCapacityAndLongInputs) {
  char small[5];
  std::strcpy(small, "PAD9");
  EXPECT_EQ(su::IncValueInString(small, sizeof small, 1), 1);
  EXPECT_STREQ(small, "PAD1");  // "PAD10" cut to the capacity
  EXPECT_EQ(su::SetValueInString(nullptr, 10, 1), 0);
  char untouched[] = "AB";
  EXPECT_EQ(su::SetValueInString(untouched, 0, 1), 0);
  EXPECT_STREQ(untouched, "AB");

  // Only 255 bytes of the input are kept when the number is not whole.
  std::string long_name(300, 'A');
  long_name += "7";
  char big[400];
  std::strcpy(big, long_name.c_str());
  EXPECT_EQ(su::IncValueInString(big, sizeof big, 1), 0);
  EXPECT_EQ(std::string(big), std::string(255, 'A') + "1");

  // Overflow wraps instead of being undefined.
  char max[32];
  std::snprintf(max, sizeof max, "N%d", INT_MAX);
  EXPECT_EQ(su::IncValueInString(max, sizeof max, 1), 1);
  EXPECT_EQ(std::string(max), "N" + std::to_string(INT_MIN));
}

TEST(StringUtilityTest, SeparateStringAndNumeric) {
  const struct {
    const char* s;
    const char* text;
    const char* digits;
    int ret;
  } rows[] = {
      {"ABC123", "ABC", "123", 1},
      {"123", "", "123", 1},
      {"ABC", "ABC", "", 0},
      {"A1B", "A1B", "", 0},
      {"R-05", "R-", "05", 1},
      {"1.5", "1.", "5", 1},
      {"x ", "x ", "", 0},
  };
  for (const auto& r : rows) {
    CString text = "old", digits = "old";
    EXPECT_EQ(su::SeparateStringAndNumeric(r.s, text, digits), r.ret) << r.s;
    EXPECT_EQ(text, r.text) << r.s;
    EXPECT_EQ(digits, r.digits) << r.s;
  }
  CString text = "keep", digits = "keep";
  EXPECT_EQ(su::SeparateStringAndNumeric("", text, digits), -1);
  EXPECT_EQ(text, "keep");
  EXPECT_EQ(digits, "keep");
}

TEST(StringUtilityTest, StringFamilyIncrements) {
  const struct {
    const char* s;
    int inc;
    const char* auto_inc;  // AutoIncrese
    const char* inc_str;   // IncValueInString
  } rows[] = {
      {"NET", 5, "NET5", "NET5"},
      {"NET5", 5, "NET10", "NET10"},
      {"", 3, "3", "3"},
      {"A009", 1, "A10", "A10"},  // leading zeros are not kept
      {"007", 1, "8", "8"},
      {"L2", -5, "L-3", "L-3"},
      {"PAD7", 0, "PAD7", "PAD7"},
      {"X", 0, "X0", "X"},  // IncValueInString leaves s when the increment is 0
  };
  for (const auto& r : rows) {
    EXPECT_EQ(su::AutoIncrese(r.s, r.inc), r.auto_inc) << r.s << " " << r.inc;
    EXPECT_EQ(su::IncValueInString(CString(r.s), r.inc), r.inc_str) << r.s;
    EXPECT_EQ(su::IncValueInStringForce(r.s, r.inc), r.s) << r.s;
  }
  EXPECT_EQ(su::IncValueInStringForce("X1", 1), "X1");
}

}  // namespace
