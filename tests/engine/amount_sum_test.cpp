// Summing a column's amounts by counting digits by place must give exactly what reading every
// amount and adding them one by one gives: the same sum, the same overflow, on amounts in the
// usual layout and on everything else a column may hold.
#include "engine/amount_sum.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kroveld {
namespace {

// The general way: every field read by the numeric test and added in turn.
struct OneByOne {
  const NumberLocale& loc;
  Fixed4 total;
  bool overflow = false;
  bool numeric = false;

  void Add(std::string_view field) {
    Fixed4 value;
    if (!QuickFixed(field, value, loc) && ParseFixed(field, value, loc) != NumberParse::kOk) return;
    numeric = true;
    if (!AddFixed(total, value, total)) overflow = true;
  }
  AmountSum::Result Take() {
    AmountSum::Result r{total, overflow};
    total = Fixed4{};
    overflow = false;
    return r;
  }
};

// A fixed pseudo-random sequence, so that a failure can be replayed.
struct Dice {
  std::uint64_t state;
  std::uint32_t Next() {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<std::uint32_t>(state >> 33);
  }
  int Below(int n) { return static_cast<int>(Next() % static_cast<std::uint32_t>(n)); }
};

// `digits` random digits grouped by threes with `sep` (or not grouped).
std::string Digits(Dice& dice, int digits, bool grouped, char sep) {
  std::string out;
  for (int i = 0; i < digits; ++i) {
    if (grouped && i > 0 && (digits - i) % 3 == 0) out.push_back(sep);
    out.push_back(
        static_cast<char>('0' + (i == 0 && digits > 1 ? 1 + dice.Below(9) : dice.Below(10))));
  }
  return out;
}

// `text` with '.' and ',' made the locale's decimal point and thousands separator.
std::string Marks(std::string text, const NumberLocale& loc) {
  for (char& c : text) c = c == '.' ? loc.decimal_point : c == ',' ? loc.thousands_sep : c;
  return text;
}

// An amount as a report prints it, right-aligned in `width` with the sign's room after it, or
// now and then something else a column holds: blanks, a word, thousands ungrouped or grouped
// wrongly, no decimals, signs out of place, grouped with something that is not the separator.
std::string Field(Dice& dice, int width, int decimals, const NumberLocale& loc) {
  const int form = dice.Below(40);
  const char* odd[] = {"",        "   N/A",   "",        "12,34",   "1,234",
                       "  1.50-", "  - 1.00", "  (1.00", " -(1.00)"};
  std::string core;
  if (form == 0) return std::string(static_cast<std::size_t>(width), ' ');
  if (form == 2) core = Digits(dice, 5, false, loc.thousands_sep);
  if (form == 3 || form == 4) core = Marks(odd[form], loc);
  if (form == 1 || (form >= 5 && form <= 8)) return Marks(odd[form], loc);
  if (form == 10 || form == 11) {
    std::string text = Marks("  12,345.67 ", loc);
    text[4] = form == 11 ? loc.decimal_point : "'x_/:;"[dice.Below(6)];
    return std::string(static_cast<std::size_t>(width > 12 ? width - 12 : 0), ' ') + text;
  }
  if (core.empty()) {
    const int whole = 1 + dice.Below(9);
    core = Digits(dice, whole, dice.Below(8) != 0, loc.thousands_sep);
    if (form == 9) decimals = 1 + dice.Below(4);  // another layout now and then
    if (decimals > 0) core += loc.decimal_point + Digits(dice, decimals, false, loc.thousands_sep);
  }
  const int sign = dice.Below(6);
  std::string text = sign == 0 ? "(" + core + ")" : sign == 1 ? "-" + core + " " : core + " ";
  if (static_cast<int>(text.size()) < width) {
    text.insert(0, static_cast<std::size_t>(width) - text.size(), ' ');
  }
  return text;
}

// Feeds both ways the fields of `rows` rows, each in a line with bytes around it (the next
// field's digits, or the line's end right after it), taking the sums at random total lines. The
// counting is given the field alone or, every other row, the whole line as a row's columns are.
void ExpectSameSums(std::uint64_t seed, int width, int decimals, int rows,
                    const NumberLocale& loc) {
  Dice dice{seed};
  std::vector<AmountSum> sums(1, AmountSum(loc));
  AmountSum& counted = sums[0];
  OneByOne general{loc, Fixed4{}, false, false};
  int takes = 0;
  for (int r = 0; r < rows; ++r) {
    const std::string field = Field(dice, width, decimals, loc);
    std::string line = std::string(static_cast<std::size_t>(dice.Below(3)), ' ') + field;
    const std::size_t from = line.size() - field.size();
    const int after = dice.Below(4);
    if (after == 0) line += "  123" + std::string(1, loc.decimal_point) + "45";
    if (after == 1) line += "9";
    if (after == 2) {
      while (!line.empty() && line.back() == ' ') line.pop_back();  // trailing blanks trimmed
    }
    // As a row's field is cut: its width of the line from its start, clipped to the line.
    const std::size_t readable = from < line.size() ? line.size() - from : 0;
    const std::string_view cut =
        readable == 0 ? std::string_view()
                      : std::string_view(line).substr(from, static_cast<std::size_t>(width));
    if (r % 2 == 0) {
      counted.Add(cut, readable);
    } else {
      AmountSum::AddFields(sums, {AmountSum::Bytes{from, static_cast<std::size_t>(width)}}, line);
    }
    general.Add(cut);
    if (dice.Below(40) == 0 || r + 1 == rows) {
      const AmountSum::Result a = counted.Take();
      const AmountSum::Result b = general.Take();
      ASSERT_EQ(a.overflow, b.overflow) << "seed " << seed << " row " << r;
      ASSERT_EQ(a.total.raw, b.total.raw) << "seed " << seed << " row " << r;
      ++takes;
    }
    ASSERT_EQ(counted.Numeric(), general.numeric) << "seed " << seed << " row " << r;
  }
  EXPECT_GT(takes, 0);
}

TEST(AmountSum, CountingByPlaceAddsUpAsReadingEachAmount) {
  const NumberLocale english;  // '.' and ','
  NumberLocale german;
  german.decimal_point = ',';
  german.thousands_sep = '.';
  struct Case {
    int width;
    int decimals;
  } cases[] = {{16, 2}, {12, 0}, {16, 4}, {10, 1}, {20, 2}, {5, 2}};
  for (const Case& c : cases) {
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
      ExpectSameSums(seed, c.width, c.decimals, 4000, seed % 2 ? english : german);
    }
  }
}

TEST(AmountSum, LeavingTheRangeIsFoundAsAddingInTurnFindsIt) {
  // Amounts near the end of the fixed-point range, among counted ones: the sum leaves the range
  // on the way and may come back into it, which adding in turn reports as out of range.
  const NumberLocale loc;
  const std::string huge = "900000000000000.00";  // 9e14: two of them leave the range
  const std::string usual = "      1,234.56  ";
  struct Case {
    const char* what;
    std::vector<std::string> fields;
    int times = 30;  // each field in turn
  } cases[] = {
      {"two huge ones", {usual, huge, usual, huge, usual}},
      {"out and back", {huge, huge, "-" + huge, usual}},
      {"just in range", {huge, "   1,234.56     ", "-" + huge}},
      // So near the end that one counted amount more leaves it.
      {"at the edge", {"922337203685477.0000", usual, "  (1,234.56)    "}, 1},
      {"at the other edge", {"-922337203685477.0000", "  (1,234.56)    ", usual}, 1},
  };
  for (const Case& c : cases) {
    std::vector<AmountSum> sums(1, AmountSum(loc));
    AmountSum& counted = sums[0];
    OneByOne general{loc, Fixed4{}, false, false};
    for (int round = 0; round < 2; ++round) {  // the second after a total line
      for (const std::string& field : c.fields) {
        for (int r = 0; r < c.times; ++r) {
          counted.Add(field, field.size());
          general.Add(field);
        }
      }
      const AmountSum::Result a = counted.Take();
      const AmountSum::Result b = general.Take();
      EXPECT_EQ(a.overflow, b.overflow) << c.what;
      EXPECT_EQ(a.total.raw, b.total.raw) << c.what;
    }
  }
}

}  // namespace
}  // namespace kroveld
