// A private folder under the system's temporary folder, made on construction and removed with
// everything in it on destruction. The preview runs with it as its application folder, so the
// files a conversion writes there (_ExportSpecs.krs of a short recipe) never touch the user's.
#pragma once

#include <string>

namespace kroveld {

class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  // The folder without a trailing separator; "" when it could not be made (Error() says why).
  const std::string& Path() const { return path_; }
  const std::string& Error() const { return error_; }
  // Path() + "/" + name.
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
  std::string error_;
};

}  // namespace kroveld
