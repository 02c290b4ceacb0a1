// Fuzzes tab expansion and the template line parser: the expanded text has no tab and is at least
// as long as the input less its tabs; the parser's three lists stay parallel with 1-based,
// ordered positions inside the template.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_support.h"
#include "engine/template_parser.h"
#include "util/strings.h"

using namespace kroveld;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const int tabSize = static_cast<int>(static_cast<std::int8_t>(data[0]));
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);

  std::string expanded;
  ExpandTabs(text, tabSize, expanded);
  if (tabSize >= 1 && expanded.find('\t') != std::string::npos) abort();
  if (ExpandTabs(text, tabSize) != expanded) abort();

  fuzz::QuietPort ui;
  std::vector<int> starts, ends;
  std::vector<std::string> operators;
  const bool ok = ParseTemplateLine(ui, text, starts, ends, operators);
  if (starts.size() != ends.size() && !(starts.empty() || ends.empty())) abort();
  if (ok && (starts.size() != ends.size() || starts.size() != operators.size())) abort();
  for (std::size_t i = 0; ok && i < starts.size(); ++i) {
    if (starts[i] < 1 || ends[i] < starts[i] || ends[i] > static_cast<int>(text.size()) + 1)
      abort();
    if (i > 0 && starts[i] <= ends[i - 1] - 1) abort();
  }
  return 0;
}
