#include "app/help_text.h"

namespace kroveld {

const std::string& CommandLineHelpText() {
  static const std::string text =
      R"(Using the Command Line

kroveld converts a fixed-column text report, or a whole folder of them, into a
CSV file or a spreadsheet (.xls, .xlsx) without opening a window. Two syntaxes
are accepted; the first argument decides which one is used.

SLASH SYNTAX (the first argument begins with "/")

  kroveld /I input /O output [/R recipe] [/S] [/G] [/E] [/C] [/W sheet]
          [/T tabsize] [/L logfile] [/V] [/?]

  /I path    input file, or a folder followed by a wildcard: \data\in\*.txt
  /O path    output file; its name decides the kind: .CSV anywhere in the
             name gives CSV, otherwise .XLS gives a workbook. With a
             wildcard input the output must hold a wildcard: \data\out\*.CSV
  /R path    recipe file (.rcp) to use; without /R the automatic recipe is
             made from the markers in the input
  /S         also convert the files in the subfolders of the input folder
  /G         write each output in the folder of its input
  /E         show the spreadsheet application while converting
  /C         do not clear the target sheet before writing
  /W sheet   target sheet by name or number (double quotes are removed)
  /T size    tab stop width of the input text (default 8)
  /L path    log file (its folder is created; nothing is written to it)
  /V         verbose (accepted)
  /?         show this help; the rest of the line still runs as a job

  Switch letters may be given in either case. Values run to the next "/", so
  they cannot contain "/" but may contain blanks. A value that contains a
  backslash is a path as it stands (double quotes removed); a plain name is
  taken from the application folder (where config.ini is kept). On Linux
  write paths with backslashes: \home\ann\reports\june.txt.

  Example:
    kroveld '/I\home\ann\in\june.txt' '/O\home\ann\out\june.csv' '/R\home\ann\ledger.rcp'
    kroveld '/I\data\in\*.txt' '/O\data\out\*.CSV' /S

CONVENTIONAL SYNTAX (the first argument begins with "-")

  kroveld -i INPUT -o OUTPUT [-r RECIPE] [options]

  -i, --input PATH       input file, or folder with a wildcard ('in/*.txt')
  -o, --output PATH      output file, or wildcard output ('out/*.csv')
  -r, --recipe PATH      recipe file (.rcp); without it the automatic recipe
  -s, --subfolders       also convert the files of subfolders
  -g, --beside-input     write each output beside its input
  -e, --show             show the spreadsheet application
      --no-clear         do not clear the target sheet before writing
  -w, --sheet SHEET      target sheet by name or number
  -t, --tab-size N       tab stop width of the input text (default 8)
  -l, --log PATH         log file (its folder is created)
  -v, --verbose          verbose (accepted)
  -h, --help             show this help
      --version          show the version

  Paths are taken relative to the current directory. Quote wildcards so that
  the shell does not expand them.

  Example:
    kroveld -i june.txt -o june.csv -r ledger.rcp
    kroveld -i 'in/*.txt' -o 'out/*.csv' --subfolders

MESSAGES AND EXIT STATUS

  Every message is one line on standard error: "kroveld: error: ...",
  "kroveld: warning: ...", "kroveld: note: ..." or "kroveld: ...". Progress
  is shown on standard error when it is a terminal. Ctrl-C stops the run:
  a table under way ends at its current row, a batch before its next file,
  and the stop is said on standard error.

  0    the run showed no message (the tab-characters note aside)
  1    the run showed a message, or was stopped with Ctrl-C
  2    the conventional command line was rejected
)";
  return text;
}

}  // namespace kroveld
