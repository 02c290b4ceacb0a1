#include "app/console_port.h"

#include "util/numbers.h"

namespace kroveld {

namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
constexpr std::size_t kMaxProgressWidth = 79;

}  // namespace

ConsolePort::ConsolePort(std::FILE* out, bool progress) : out_(out), progress_(progress) {}

ConsolePort::~ConsolePort() {
  EraseProgress();
}

const char* ConsolePort::Prefix(Icon icon) {
  switch (icon) {
    case Icon::Critical:
      return "kroveld: error: ";
    case Icon::Exclamation:
      return "kroveld: warning: ";
    case Icon::Information:
      return "kroveld: note: ";
    case Icon::None:
    case Icon::Question:
      break;
  }
  return "kroveld: ";
}

std::string ConsolePort::OneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  bool inBreak = false;
  for (char c : text) {
    if (c == '\r' || c == '\n') {
      if (!inBreak) line += ' ';
      inBreak = true;
    } else {
      line += c;
      inBreak = false;
    }
  }
  return line;
}

void ConsolePort::BeginFile(std::string_view file, std::size_t number, std::size_t count) {
  file_heading_ = "kroveld: converting " + OneLine(file) + " (file " + std::to_string(number) +
                  " of " + std::to_string(count) + "):\n";
}

void ConsolePort::WriteLine(const char* prefix, std::string_view text) {
  EraseProgress();
  std::string line;
  line.swap(file_heading_);
  line += prefix + OneLine(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), out_);
  std::fflush(out_);
}

void ConsolePort::ShowMessage(std::string_view text, Icon icon, std::string_view /*title*/) {
  CountMessage();
  WriteLine(Prefix(icon), text);
}

void ConsolePort::Summary(std::string_view text) {
  WriteLine(Prefix(Icon::None), text);
}

void ConsolePort::ShowNote(std::string_view text) {
  WriteLine(Prefix(Icon::Information), text);
}

bool ConsolePort::Ask(std::string_view text, Icon icon, std::string_view /*title*/) {
  // Nobody is there to answer: a request to stop is confirmed, anything else declined.
  const bool yes = text == kTerminateQuestion;
  CountMessage();
  terminate_confirmed_ = terminate_confirmed_ || yes;
  WriteLine(Prefix(icon), std::string(text) + (yes ? " Yes" : " No"));
  return yes;
}

void ConsolePort::Status(int panel, std::string_view text) {
  if (!progress_) return;
  if (panel == 2) {
    panel2_.assign(text);
  } else if (panel == 3) {
    if (text.ends_with(kBatchStatusSuffix)) {
      file_.assign(text);
      detail_.clear();
    } else {
      detail_.assign(text);
    }
  } else {
    return;
  }
  DrawProgress(false);
}

void ConsolePort::ProcessEvents() {
  if (progress_ && numbers_) DrawProgress(false);
}

void ConsolePort::Progress(const RunProgress& where) {
  if (!progress_) return;
  numbers_ = true;
  where_ = where;
  phase_.assign(where.phase);
  DrawProgress(false);
}

// "file 2 of 10  Table 1 row 12,345 of 100,000  writing  (3 s)" from the run's numbers.
void ConsolePort::LineFromNumbers() {
  line_ = "file " + FormatGroupedCount(static_cast<std::int64_t>(where_.file)) + " of " +
          FormatGroupedCount(static_cast<std::int64_t>(where_.files));
  if (!phase_.empty()) {
    if (where_.table > 0 && phase_ != "saving") line_ += "  Table " + std::to_string(where_.table);
    if (where_.rows > 0) {
      line_ += (phase_ == "saving" ? "  row " : " row ") + FormatGroupedCount(where_.row) + " of " +
               FormatGroupedCount(where_.rows);
    }
    line_ += "  " + phase_;
  }
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started_)
          .count();
  line_ += "  (" + std::to_string(seconds) + " s)";
}

void ConsolePort::DrawProgress(bool force) {
  const auto now = std::chrono::steady_clock::now();
  if (!force && drawn_ && now - last_draw_ < kRedrawInterval) return;
  last_draw_ = now;
  if (numbers_) {
    LineFromNumbers();
  } else {
    line_ = file_;
    if (!detail_.empty()) {
      if (!line_.empty()) line_ += "  ";
      line_ += detail_;
    }
    if (!panel2_.empty()) {
      line_ += "  (";
      line_ += panel2_;
      line_ += " s)";
    }
  }
  if (line_.size() > kMaxProgressWidth) {
    line_ = "..." + line_.substr(line_.size() - (kMaxProgressWidth - 3));
  }
  std::fputs("\r\033[K", out_);
  std::fwrite(line_.data(), 1, line_.size(), out_);
  std::fflush(out_);
  drawn_ = true;
}

void ConsolePort::EraseProgress() {
  if (!drawn_) return;
  std::fputs("\r\033[K", out_);
  std::fflush(out_);
  drawn_ = false;
}

}  // namespace kroveld
