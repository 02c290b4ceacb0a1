// The running sum of one column's amounts between two total lines, for the totals check. A report
// prints its amounts the same way row after row: right-aligned, the decimal point at the same
// place of the field, groups of three. Such an amount is not read into a number: each of its
// digits is counted at its place in the field, sixteen places at once, and the counts are weighed
// into a sum only when a total line asks for it. Any other amount is read by the quick and then
// the general numeric test and added as it is. The sum, and whether it left the fixed-point range,
// are exactly those of adding the rows one by one in their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "util/numbers.h"

namespace kroveld {

// The amounts of a report in their usual printed form, read without the general numeric test:
// blanks around, a leading minus or parentheses, digits grouped by threes with the locale's
// separator (or not grouped), the locale's decimal point and at most four decimals. True with the
// value when the text has that form (the general test then gives the same value); false when it
// does not, and the caller asks ParseFixed.
bool QuickFixed(std::string_view text, Fixed4& out, const NumberLocale& loc);

class AmountSum {
 public:
  // `loc` must outlive the sum.
  explicit AmountSum(const NumberLocale& loc = NumberLocale::Current());

  // Adds the column's field of a row when it is numeric. `readable`: how many bytes from
  // field.data() on may be read (at least field.size()); sixteen let the field be looked at in
  // one load.
  void Add(std::string_view field, std::size_t readable);

  // The sum of the amounts added since the last Take, and whether adding them one by one left
  // the fixed-point range (the sum is then of no use); counting starts again.
  struct Result {
    Fixed4 total;
    bool overflow = false;
  };
  Result Take();

  // Whether any amount was added since the sum was made.
  bool Numeric() const { return numeric_; }

  // Where a column's field lies in a line: bytes [from, from + width), clipped to the line.
  struct Bytes {
    std::size_t from = 0;
    std::size_t width = 0;
  };
  // Adds its field of `line` to each sum (`sums` and `fields` alike in size): one call per row.
  static void AddFields(std::vector<AmountSum>& sums, const std::vector<Bytes>& fields,
                        std::string_view line);

 private:
  static constexpr int kPlaces = 16;
  static constexpr std::size_t kPlaceBytes =
      kPlaces;                             // the widest field whose digits are counted by place
  static constexpr int kRowsPerByte = 28;  // the first counters are bytes: 28 * 9 < 256

  // `full`: the field is sixteen bytes long (the usual case, with nothing to mask).
  template <bool full>
  bool Counted(const char* field, std::size_t length);
  void AddHere(std::string_view field, std::size_t readable);
  void AddOtherwise(std::string_view field, std::size_t readable);
  bool Relearn(unsigned digits, unsigned points);
  bool Learn(unsigned digits, unsigned points);
  void AddValue(Fixed4 value);
  void Flush();
  std::int64_t CountedSum();

  const NumberLocale* loc_;
  char point_ = '.';
  char separator_ = ',';
  bool countable_ = false;  // the locale's characters allow counting by place
  bool numeric_ = false;

  // How the counted amounts are laid out in the field: the place of the decimal point, the
  // places before it (bit p: place p), and the field as such an amount prints with its digits
  // made '0', per sign (none, a minus, parentheses) and place of the first digit (shaped_: the
  // first-digit places that have a shape).
  unsigned pointPlace_ = ~0u;  // the point's place as a bit; none before the first layout
  unsigned beforePoint_ = 0;
  alignas(16) char shape_[3][kPlaces][kPlaces] = {};
  unsigned shaped_[3] = {};
  std::int64_t weight_[kPlaces] = {};  // what a digit at each place is worth, in units of 1/10000
  std::uint64_t most_[kPlaces] = {};   // more than any amount whose first digit is at the place

  // The counts: per place, the digits of the amounts (a negative amount's subtracted), in bytes
  // for 28 rows at most (those of positive and of negative amounts apart), then in 64 bits.
  alignas(16) std::uint8_t plus_[kPlaces] = {};
  alignas(16) std::uint8_t minus_[kPlaces] = {};
  int byteRows_ = 0;
  std::int64_t counts_[kPlaces] = {};
  alignas(16) char laneInField_[kPlaces + 1][kPlaces];  // per field length, its lanes set
  bool counted_ = false;                                // counts_, plus_ or minus_ hold something

  // Amounts added one by one: their sum while no order of adding them can leave the range
  // (bound_ holds the sum of their magnitudes and of those counted), then the running sum.
  std::int64_t added_ = 0;
  std::uint64_t bound_ = 0;
  bool inOrder_ = false;  // past the bound: every amount is added in turn, as it comes
  Fixed4 running_;
  bool overflow_ = false;
};

}  // namespace kroveld
