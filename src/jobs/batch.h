// Batch conversion (BeginProcessing): one conversion for a single input file, or one per file
// for a wildcard input ("folder" + "*.ext"), walking subfolders on request, with each output name
// made from the wildcard output name and the input's subfolders mirrored below the output folder.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/context.h"
#include "jobs/conversion_job.h"

namespace kroveld {

inline constexpr const char* kUnableToCreateFileList = "Unable to create file list";
inline constexpr const char* kNeedWildcardOutput =
    "You must specify a proper output file which includes the wild card\r\n\r\n"
    "For example: C:\\Output\\*.CSV";
inline constexpr const char* kInvalidTargetFolder = "Invalid Target Folder";

// "*.*" matches every extension; otherwise the pattern must be exactly "*." + the extension,
// compared without regard to case.
bool PatternMatches(std::string_view pattern, std::string_view extension);

// Adds the files of `folder` whose extension matches, then (with doSubfolders) those of each
// subfolder, depth first; files and subfolders in name order. False when the folder is missing.
// Stops early, keeping what it has, when a stop is requested.
bool BuildOriginalFileList(Context& ctx, std::string folder, std::string_view pattern,
                           bool doSubfolders, std::vector<std::string>& list);

// The list for an input specification: a wildcard walks the folder before the first "*" with the
// pattern from it; a plain name must be an existing file. False with `error` otherwise.
bool CreateFileList(Context& ctx, const std::string& input, bool doSubfolders,
                    std::vector<std::string>& list, std::string& error);

// Where a wildcard batch writes the output of `file`.
struct BatchTarget {
  std::string outputFolder;  // parent of the wildcard output name, with a trailing separator
  std::string extension;     // extension of the wildcard output name ("CSV")
  std::string inputRoot;     // the input specification before its first "*"
  bool besideInput = false;  // save each output in the folder of its input
};
BatchTarget MakeBatchTarget(const std::string& input, const std::string& output, bool besideInput);
// The output name of `file`; `folderToCreate` receives the folder the output needs (empty when
// it is written beside its input).
std::string OutputNameFor(const BatchTarget& target, const std::string& file,
                          std::string* folderToCreate);

// Where a stop request ended a wildcard batch: before file `next` (1-based) of `count`.
struct BatchStop {
  bool betweenFiles = false;
  std::size_t next = 0;
  std::size_t count = 0;
};

// The Convert command: runs ctx.options through RunRecipe once or per file, with status texts,
// and shows "Conversion Complete" and the elapsed seconds at the end. A batch that a stop request
// ends between files says nothing; `stop` (when given) tells where it ended.
void BeginProcessing(Context& ctx, ConversionHost& host, BatchStop* stop = nullptr);

}  // namespace kroveld
