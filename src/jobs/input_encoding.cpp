#include "jobs/input_encoding.h"

namespace kroveld {

bool ReadsAsUtf8(InputEncoding encoding, const std::string& path) {
  switch (encoding) {
    case InputEncoding::kUtf8:
      return true;
    case InputEncoding::kAuto:
      // Pure ASCII reads the same either way and keeps the 8-bit road.
      return ClassifyFileText(path) == FileText::kUtf8;
    case InputEncoding::kUnset:
    case InputEncoding::kCp1252:
    case InputEncoding::kLatin1:
      break;
  }
  return false;
}

bool ApplyInputEncoding(Context& ctx, std::string_view recipeChoice) {
  InputEncoding encoding = ctx.options.inputEncoding;
  bool known = true;
  if (encoding == InputEncoding::kUnset) {
    known = ParseInputEncoding(recipeChoice, encoding);
    if (!known) encoding = InputEncoding::kUnset;
  }
  ctx.lineProcessor.SetUtf8(ReadsAsUtf8(encoding, ctx.currentInput));
  return known;
}

}  // namespace kroveld
