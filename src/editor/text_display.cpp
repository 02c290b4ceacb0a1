#include "editor/text_display.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/window/widget_names.h"
#include "editor/editor_support.h"
#include "jobs/workbook/text_encoding.h"
#include "util/files.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

namespace {

constexpr int kTabSize = 8;
// A "line" of a file that is not text can be megabytes long; the list shows its beginning.
constexpr std::size_t kShownLineBytes = 4096;

}  // namespace

TextDisplay::TextDisplay(UiPort& ui, QString path, QWidget* mainWindow, QWidget* parent)
    : QDialog(parent), ui_(ui), path_(std::move(path)), main_window_(mainWindow) {
  Named(this, QStringLiteral("frmTextDisplay"));
  setWindowTitle(path_);
  list_ = Named(new QListWidget(this), QStringLiteral("lstData"));
  list_->setFont(FixedPitchFont());
  list_->setUniformItemSizes(true);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  auto* close = Named(new QPushButton(tr("Close"), this), QStringLiteral("cmdClose"));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(close);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addLayout(buttons);
  resize(720, 480);
  connect(close, &QPushButton::clicked, this, &QDialog::accept);
}

void TextDisplay::Load() {
  PlaceBelow(this, main_window_, 400, 200);
  list_->clear();
  const std::string path = path_.toStdString();
  if (!FileExists(path)) {
    ui_.Message("Help file " + path + " does not exist!", Icon::Exclamation);
    return;
  }
  TextFile file;
  if (!file.Open(path)) {
    ui_.Message(file.Error(), Icon::Exclamation);
    return;
  }
  QStringList lines;
  std::string_view line;
  std::string expanded;
  while (file.ReadLine(line)) {
    if (lines.size() == kViewerMaxLines) {
      lines << tr("... only the first %1 lines are shown").arg(kViewerMaxLines);
      break;
    }
    expanded.clear();
    ExpandTabs(line.substr(0, kShownLineBytes), kTabSize, expanded);
    lines << QString::fromStdString(AsUtf8(expanded));
  }
  list_->addItems(lines);
}

}  // namespace kroveld
