// The numeric test, fixed-point sums and the number formats.
#include "util/numbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kroveld {
namespace {

std::string Plain(Fixed4 v, const NumberLocale& loc) {
  std::string s;
  AppendPlain(s, v, loc);
  return s;
}

NumberLocale Us() {
  return NumberLocale{};
}
NumberLocale German() {
  NumberLocale l;
  l.decimal_point = ',';
  l.thousands_sep = '.';
  l.currency = "\xe2\x82\xac";  // euro sign in UTF-8
  return l;
}

TEST(ParseFixed, NumericOverflowAndNotNumeric) {
  struct Case {
    const char* text;
    NumberParse result;
    std::int64_t raw;
  };
  using P = NumberParse;
  const Case cases[] = {
      {"12", P::kOk, 120000},
      {"  1,000.50 ", P::kOk, 10005000},
      {"-3", P::kOk, -30000},
      {"3-", P::kOk, -30000},
      {"3+", P::kOk, 30000},
      {"(0.50)", P::kOk, -5000},
      {"( 12 )", P::kOk, -120000},
      {"$5", P::kOk, 50000},
      {"5$", P::kOk, 50000},
      {"-$5", P::kOk, -50000},
      {"$ 1,234.5", P::kOk, 12345000},
      {"1.5E3", P::kOk, 15000000},
      {"1.5e-2", P::kOk, 150},
      {".5", P::kOk, 5000},
      {"5.", P::kOk, 50000},
      {"0", P::kOk, 0},
      {"000123", P::kOk, 1230000},
      {"1.23456", P::kOk, 12346},  // five decimals: half away from zero
      {"1.23455", P::kOk, 12346},
      {"-1.23455", P::kOk, -12346},
      {"0.00005", P::kOk, 1},
      {"1,2,3", P::kOk, 1230000},  // separators between digits, groups not checked
      {"922337203685477.5807", P::kOk, 9223372036854775807LL},
      {"922337203685477.5808", P::kOverflow, 0},
      {"1E20", P::kOverflow, 0},
      {"1E-30", P::kOk, 0}};
  for (const Case& c : cases) {
    Fixed4 v{777};
    const NumberParse r = ParseFixed(c.text, v, Us());
    EXPECT_EQ(r, c.result) << '"' << c.text << '"';
    if (r == P::kOk) {
      EXPECT_EQ(v.raw, c.raw) << '"' << c.text << '"';
    }
  }
  for (const char* text : {"", "1.2.3", "12abc", "--1", "-1-", "()", "(-1)", "(1", "n/a", "$", ".",
                           ",5", "5,", "1,,0", "1.0,5", "1E", "E5", "1 2", "$5$"}) {
    Fixed4 v{777};
    EXPECT_EQ(ParseFixed(text, v, Us()), P::kNotNumeric) << '"' << text << '"';
  }
}

TEST(ParseFixed, LocaleSeparatorsAndCurrency) {
  const NumberLocale de = German();
  Fixed4 v;
  ASSERT_EQ(ParseFixed("1.234,56", v, de), NumberParse::kOk);
  EXPECT_EQ(v.raw, 12345600);
  ASSERT_EQ(ParseFixed("-5 \xe2\x82\xac", v, de), NumberParse::kOk);
  EXPECT_EQ(v.raw, -50000);
  EXPECT_EQ(ParseFixed("1,234.56", v, de), NumberParse::kNotNumeric);
  EXPECT_EQ(ParseFixed("$5", v, de), NumberParse::kNotNumeric);
}

TEST(ParseDouble, SameGrammarAsTheFixedTest) {
  double d = 0;
  ASSERT_TRUE(ParseDouble(" (1,234.5) ", d, Us()));
  EXPECT_EQ(d, -1234.5);
  ASSERT_TRUE(ParseDouble("1E20", d, Us()));  // too big for fixed point, fine for a double
  EXPECT_EQ(d, 1e20);
  ASSERT_TRUE(ParseDouble("0.1", d, Us()));
  EXPECT_EQ(d, 0.1);
  EXPECT_FALSE(ParseDouble("12abc", d, Us()));
  EXPECT_FALSE(ParseDouble("", d, Us()));
}

TEST(Fixed4, SumsAndPlainText) {
  Fixed4 sum;
  for (const char* piece : {"1,000.50", " 2 ", "(0.50)"}) {
    Fixed4 v;
    ASSERT_EQ(ParseFixed(piece, v, Us()), NumberParse::kOk);
    ASSERT_TRUE(AddFixed(sum, v, sum));
  }
  EXPECT_EQ(Plain(sum, Us()), "1002");
  EXPECT_EQ(FormatGrouped(sum, 2, Us()), "1,002.00");

  // Ten times 0.1 is exactly 1 in fixed point.
  Fixed4 tenth, total;
  ParseFixed("0.1", tenth, Us());
  for (int i = 0; i < 10; ++i) AddFixed(total, tenth, total);
  EXPECT_EQ(Plain(total, Us()), "1");

  Fixed4 big{9223372036854775807LL}, one{10000}, out{42};
  EXPECT_FALSE(AddFixed(big, one, out));
  EXPECT_EQ(out.raw, 42);

  struct Case {
    std::int64_t raw;
    const char* plain;
  };
  const Case cases[] = {{10025000, "1002.5"},
                        {-5000, "-0.5"},
                        {0, "0"},
                        {1, "0.0001"},
                        {-120000, "-12"},
                        {12340, "1.234"},
                        {9223372036854775807LL, "922337203685477.5807"}};
  for (const Case& c : cases) EXPECT_EQ(Plain(Fixed4{c.raw}, Us()), c.plain) << c.raw;
  EXPECT_EQ(Plain(Fixed4{10025000}, German()), "1002,5");
}

TEST(Fixed4, GroupedFormats) {
  struct Case {
    std::int64_t raw;
    int decimals;
    const char* text;
  };
  const Case cases[] = {{10020000, 2, "1,002.00"},
                        {-12345000, 0, "-1,235"},  // -1234.5: half away from zero
                        {12344999, 0, "1,234"},
                        {0, 2, "0.00"},
                        {-40, 2, "0.00"},  // rounds to zero: no minus
                        {-50, 2, "-0.01"},
                        {9999999, 2, "1,000.00"},
                        {1234567890120000LL, 0, "123,456,789,012"},
                        {9999, 0, "1"},
                        {9223372036854775807LL, 2, "922,337,203,685,477.58"},
                        {-9223372036854775807LL, 0, "-922,337,203,685,478"}};
  for (const Case& c : cases) {
    EXPECT_EQ(FormatGrouped(Fixed4{c.raw}, c.decimals, Us()), c.text) << c.raw;
  }
  EXPECT_EQ(FormatGrouped(Fixed4{12345670000LL}, 2, German()), "1.234.567,00");
  std::string out = "x=";
  AppendGrouped(out, Fixed4{10000}, 0, Us());
  EXPECT_EQ(out, "x=1");
}

TEST(FormatPlainDouble, ShortestTextThatReadsBack) {
  EXPECT_EQ(FormatPlainDouble(1002.5, Us()), "1002.5");
  EXPECT_EQ(FormatPlainDouble(1.0 / 3.0, Us()), "0.3333333333333333");
  EXPECT_EQ(FormatPlainDouble(-0.0, Us()), "0");
  EXPECT_EQ(FormatPlainDouble(12, Us()), "12");
  EXPECT_EQ(FormatPlainDouble(0.1, German()), "0,1");
  const double third = 2.0 / 3.0;
  double back = 0;
  ASSERT_TRUE(ParseDouble(FormatPlainDouble(third, Us()), back, Us()));
  EXPECT_EQ(back, third);
}

}  // namespace
}  // namespace kroveld
