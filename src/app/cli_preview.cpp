#include "app/cli_preview.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "app/cli_command_line.h"
#include "app/console_port.h"
#include "app/version.h"
#include "jobs/preview/preview_run.h"
#include "jobs/preview/preview_text.h"
#include "util/files.h"

namespace kroveld {

namespace {

constexpr int kDefaultRows = 20;

bool ReadWholeFile(const std::string& path, std::string& text) {
  std::ifstream in(NativePath(path), std::ios::binary);
  if (!in) return false;
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

}  // namespace

bool IsPreviewCommandLine(const std::vector<std::string>& args) {
  for (const std::string& arg : args) {
    if (arg == "--") break;
    if (arg == "--preview") return true;
  }
  return false;
}

int RunPreviewCommandLine(const std::vector<std::string>& args) {
  CLI::App app{"Shows what a recipe extracts from a report; writes nothing.",
               std::string(kProgramName) + " --preview"};
  std::string input, recipe;
  int tabSize = 8;
  int rows = kDefaultRows;
  bool preview = false;
  app.add_flag("--preview", preview, "Preview instead of converting");
  app.add_option("-i,--input", input, "The report to preview the recipe on")->required();
  app.add_option("-r,--recipe", recipe, "The recipe (.rcp, short form, or .krs)")->required();
  app.add_option("-t,--tab-size", tabSize, "Tab stop width of the input text");
  app.add_option("--rows", rows, "Rows of each sheet to print (default 20)");
  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    std::fputs(app.help().c_str(), stdout);
    return 0;
  } catch (const CLI::ParseError& e) {
    std::fprintf(stderr, "%s: %s\nRun with --preview --help for more information.\n", kProgramName,
                 e.what());
    return 2;
  }

  ConsolePort port(stderr, false);
  PreviewRequest request;
  request.recipePath = AbsolutePath(recipe);
  request.reportPath = AbsolutePath(input);
  request.tabSize = tabSize;
  if (!ReadWholeFile(request.recipePath, request.recipeText)) {
    port.Message("Recipe file " + recipe + " does not exist!", Icon::Exclamation);
    return 1;
  }
  const PreviewResult result = RunPreview(request);
  std::fputs(PreviewText(result, rows < 0 ? 0 : rows).c_str(), stdout);
  std::fflush(stdout);
  for (const PreviewMessage& message : result.messages) {
    if (message.note) {
      port.Note(message.text);
    } else {
      port.Message(message.text, message.icon);
    }
  }
  return result.HasMessages() ? 1 : 0;
}

}  // namespace kroveld
