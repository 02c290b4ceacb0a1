#include "jobs/batch.h"

#include "jobs/conversion_job.h"
#include "jobs/write_report.h"
#include "util/files.h"
#include "util/strings.h"
#include "util/timing.h"

namespace kroveld {

namespace {

// Appends a separator unless the folder ends in one; a folder typed with backslashes only keeps
// them, any other gets the native one.
void EnsureTrailingSeparator(std::string& folder) {
  if (!folder.empty() && IsSeparator(folder.back())) return;
  const bool backslashes =
      folder.find('\\') != std::string::npos && folder.find('/') == std::string::npos;
  folder += backslashes ? '\\' : '/';
}

std::string ElapsedSeconds(const Context& ctx) {
  return FormatSeconds(TickCount() - ctx.run.jobStartTick);
}

void ConvertList(Context& ctx, ConversionHost& host, const std::vector<std::string>& files,
                 BatchStop* stop) {
  clsConversionOptions& options = ctx.options;
  const BatchTarget target =
      MakeBatchTarget(options.sInputFile, options.sOutputFile, options.bSaveInOriginalFolder);
  const std::string count = ToText(static_cast<long long>(files.size()));
  std::string folder;
  std::string status;
  for (std::size_t i = 0; i < files.size(); ++i) {
    ctx.ui.ProcessEvents();
    if (ctx.run.stopRequested.load()) {
      if (stop) *stop = BatchStop{true, i + 1, files.size()};
      break;
    }
    options.sInputFile = files[i];
    options.sOutputFile = OutputNameFor(target, files[i], &folder);
    // A folder that cannot be made shows up as the output's own failure to open.
    if (!folder.empty() && !FolderExists(folder)) CreateFolderTree(folder);
    status = files[i];
    status += "   [";
    AppendInt(status, static_cast<long long>(i + 1));
    status += " of ";
    status += count;
    status += kBatchStatusSuffix;
    ctx.run.progress = RunProgress{i + 1, files.size(), 0, 0, 0, {}};
    ctx.ui.Progress(ctx.run.progress);
    ctx.ui.Status(3, status);
    host.FileStarted(files[i], i + 1, files.size());
    RunRecipe(ctx, host);
  }
}

}  // namespace

bool PatternMatches(std::string_view pattern, std::string_view extension) {
  return pattern == "*.*" ||
         (pattern.starts_with("*.") && EqualsNoCase(pattern.substr(2), extension));
}

bool BuildOriginalFileList(Context& ctx, std::string folder, std::string_view pattern,
                           bool doSubfolders, std::vector<std::string>& list) {
  if (!FolderExists(folder)) return false;
  EnsureTrailingSeparator(folder);
  ctx.ui.Status(3, "Creating files to do list: " + folder);
  ctx.ui.Status(2, ElapsedSeconds(ctx));
  ctx.ui.ProcessEvents();

  FolderListing listing;
  if (!ListFolder(folder, listing)) return true;
  for (const std::string& name : listing.files) {
    ctx.ui.ProcessEvents();
    if (ctx.run.stopRequested.load()) return true;
    if (PatternMatches(pattern, ExtensionName(name))) list.push_back(folder + name);
  }
  if (doSubfolders) {
    for (const std::string& name : listing.folders) {
      if (ctx.run.stopRequested.load()) return true;
      BuildOriginalFileList(ctx, folder + name, pattern, doSubfolders, list);
    }
  }
  return true;
}

bool CreateFileList(Context& ctx, const std::string& input, bool doSubfolders,
                    std::vector<std::string>& list, std::string& error) {
  const std::size_t star = input.find('*');
  if (star != std::string::npos) {
    const std::string folder = input.substr(0, star);
    if (!BuildOriginalFileList(ctx, folder, std::string_view(input).substr(star), doSubfolders,
                               list)) {
      error = "Folder: " + folder + " does not exist";
      return false;
    }
    return true;
  }
  if (!FileExists(input)) {
    error = "File: " + input + " does not exist";
    return false;
  }
  list.push_back(input);
  return true;
}

BatchTarget MakeBatchTarget(const std::string& input, const std::string& output, bool besideInput) {
  BatchTarget target;
  target.outputFolder = ParentFolderName(output);
  EnsureTrailingSeparator(target.outputFolder);
  target.extension = ExtensionName(output);
  target.inputRoot = input.substr(0, input.find('*'));
  target.besideInput = besideInput;
  return target;
}

std::string OutputNameFor(const BatchTarget& target, const std::string& file,
                          std::string* folderToCreate) {
  const std::string folder = FolderOfPath(file);
  std::string name = BaseName(file);
  name += '.';
  name += target.extension;
  if (target.besideInput) {
    if (folderToCreate) folderToCreate->clear();
    return folder + name;
  }
  std::string targetFolder = target.outputFolder;
  if (folder.size() > target.inputRoot.size()) {
    targetFolder += folder.substr(target.inputRoot.size());
  }
  if (folderToCreate) *folderToCreate = targetFolder;
  return targetFolder + name;
}

namespace {

// Marks the whole job as running and tells the host, however the job ends.
class JobScope {
 public:
  JobScope(Context& ctx, ConversionHost& host) : ctx_(ctx), host_(host) {
    ctx_.run.running = true;
    host_.JobStarted();
  }
  ~JobScope() {
    host_.JobFinished();
    ctx_.run.running = false;
  }
  JobScope(const JobScope&) = delete;
  JobScope& operator=(const JobScope&) = delete;

 private:
  Context& ctx_;
  ConversionHost& host_;
};

}  // namespace

void BeginProcessing(Context& ctx, ConversionHost& host, BatchStop* stop) {
  const JobScope job(ctx, host);
  ctx.run.jobStartTick = TickCount();
  clsConversionOptions& options = ctx.options;
  if (options.sInputFile.find('*') == std::string::npos) {
    // The list is never filled for a single file, so the count always reads 0.
    ctx.run.progress = RunProgress{1, 1, 0, 0, 0, {}};
    ctx.ui.Progress(ctx.run.progress);
    ctx.ui.Status(3, options.sInputFile + "   [1 of 0" + std::string(kBatchStatusSuffix));
    RunRecipe(ctx, host);
  } else {
    std::vector<std::string> files;
    std::string error;
    if (!CreateFileList(ctx, options.sInputFile, options.bDoSubfolders, files, error)) {
      ctx.ui.Message(kUnableToCreateFileList, Icon::None);
    } else if (options.sOutputFile.find('*') == std::string::npos) {
      ctx.ui.Message(kNeedWildcardOutput, Icon::Information, kInvalidTargetFolder);
    } else if (files.empty()) {
      // The system converts nothing and says "Conversion Complete"; a note says why.
      ctx.ui.Note("No file matches " + options.sInputFile +
                  (options.bDoSubfolders ? " (subfolders included)" : "") +
                  ": nothing was converted");
    } else {
      ctx.run.syncAtEnd = true;
      ConvertList(ctx, host, files, stop);
      ctx.run.syncAtEnd = false;
      if (!ctx.currentOutput.empty()) SyncOutputs(ctx.currentOutput);
    }
  }
  ctx.ui.Status(3, "Conversion Complete");
  ctx.ui.Status(2, ElapsedSeconds(ctx));
}

}  // namespace kroveld
