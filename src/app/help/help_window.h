// The help window: the help pages shipped inside the program, shown in a browser pane with a
// contents page, back and forward, and links between topics. Topics are numbered as the main
// window and the recipe editor ask for them; kHelpContents opens the contents page.
#pragma once

#include <QDialog>
#include <QString>
#include <QUrl>

class QTextBrowser;
class QToolButton;

namespace kroveld {

inline constexpr int kHelpContents = -1234;
inline constexpr int kHelpHowToUse = -1;

// The page of a topic inside the program's resources, e.g. "qrc:/help/topic-13.html"; the
// contents page for kHelpContents and for a topic that has no page.
QUrl HelpPageUrl(int topic);

// Copies the help pages out of the program into the user's cache folder (once per version) and
// returns the file URL of the topic's page there, for the user's own web browser. Empty when
// the folder cannot be written.
QUrl HelpPageFileUrl(int topic);

class HelpWindow : public QDialog {
  Q_OBJECT
 public:
  explicit HelpWindow(QWidget* parent = nullptr);

  void ShowTopic(int topic);
  QTextBrowser* Browser() const { return browser_; }

 private:
  QTextBrowser* browser_;
  QToolButton* back_;
  QToolButton* forward_;
};

}  // namespace kroveld
