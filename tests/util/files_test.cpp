// Path helpers, folder helpers and the all-or-nothing writer.
#include "util/files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>

#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::TempDir;

TEST(PathText, BothSeparatorsCount) {
  EXPECT_EQ(NativePath("C:\\a\\b.txt"), "C:/a/b.txt");
  EXPECT_EQ(FolderOfPath("C:\\data\\in.txt"), "C:\\data\\");
  EXPECT_EQ(FolderOfPath("/data/sub\\in.txt"), "/data/sub\\");
  EXPECT_EQ(FolderOfPath("in.txt"), "");
  EXPECT_EQ(ParentFolderName("C:\\data\\sub"), "C:\\data");
  EXPECT_EQ(ParentFolderName("/data/sub/"), "/data");
  EXPECT_EQ(ParentFolderName("/data"), "/");
  EXPECT_EQ(ParentFolderName("name"), "");
  EXPECT_EQ(FileName("/a\\b\\rep.2024.txt"), "rep.2024.txt");
  EXPECT_EQ(BaseName("/a\\b\\rep.2024.txt"), "rep.2024");
  EXPECT_EQ(ExtensionName("/a\\b\\rep.2024.txt"), "txt");
  EXPECT_EQ(ExtensionName("/a.d/noext"), "");
  EXPECT_EQ(BaseName("noext"), "noext");
}

TEST(Folders, ExistenceListingAndCreation) {
  TempDir dir;
  EXPECT_FALSE(FileExists(""));
  EXPECT_FALSE(FileExists(dir.path()));  // a folder is not a file
  EXPECT_TRUE(FolderExists(dir.path()));
  const std::string f = dir.Write("b.txt", "x");
  EXPECT_TRUE(FileExists(f));
  EXPECT_TRUE(FileExists("  " + f + " "));  // the path is trimmed
  EXPECT_FALSE(FolderExists(f));

  std::string error;
  const std::string deep = dir.path() + "\\x\\y/z";
  ASSERT_TRUE(CreateFolderTree(deep, &error)) << error;
  EXPECT_TRUE(FolderExists(dir.File("x/y/z")));
  EXPECT_TRUE(CreateFolderTree(deep + "/", &error));   // already there
  EXPECT_FALSE(CreateFolderTree(f + "/sub", &error));  // a file stands in the way
  EXPECT_NE(error.find("b.txt"), std::string::npos) << error;

  dir.Write("a.txt", "");
  dir.Write("C.txt", "");
  CreateFolderTree(dir.File("m"));
  FolderListing listing;
  ASSERT_TRUE(ListFolder(dir.path(), listing));
  EXPECT_EQ(listing.files, (std::vector<std::string>{"C.txt", "a.txt", "b.txt"}));
  EXPECT_EQ(listing.folders, (std::vector<std::string>{"m", "x"}));
  EXPECT_FALSE(ListFolder(dir.File("missing"), listing));

  EXPECT_TRUE(FileContainsByte(f, 'x'));
  EXPECT_FALSE(FileContainsByte(f, '\t'));
  EXPECT_TRUE(DeleteFile(f));
  EXPECT_FALSE(FileExists(f));
  EXPECT_FALSE(DeleteFile(f));
}

TEST(AtomicFile, ReplacesTheTargetOnlyOnCommit) {
  TempDir dir;
  const std::string target = dir.Write("out.csv", "old");
  ::chmod(target.c_str(), 0640);
  {
    AtomicFile f;
    ASSERT_TRUE(f.Open(target)) << f.Error();
    f.Write("new ");
    f.Write(std::string(3u << 20, 'n'));  // larger than the write buffer
    EXPECT_EQ(ReadFile(target), "old");
    // Dropped without Commit: the target stays, no temporary file is left.
  }
  EXPECT_EQ(ReadFile(target), "old");
  FolderListing listing;
  ASSERT_TRUE(ListFolder(dir.path(), listing));
  EXPECT_EQ(listing.files, std::vector<std::string>{"out.csv"});

  AtomicFile f;
  ASSERT_TRUE(f.Open(target));
  f.Write("a,b\r\n");
  ASSERT_TRUE(f.Commit()) << f.Error();
  EXPECT_EQ(ReadFile(target), "a,b\r\n");
  struct stat st {};
  ASSERT_EQ(::stat(target.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
  ASSERT_TRUE(ListFolder(dir.path(), listing));
  EXPECT_EQ(listing.files, std::vector<std::string>{"out.csv"});
}

// Past one buffer the data is written by a second thread; pieces of every size, bigger than the
// buffer too, must come out in order and whole.
TEST(AtomicFile, LargeOutputsArriveWholeAndInOrder) {
  TempDir dir;
  for (const std::size_t piece : {std::size_t{1}, std::size_t{4093}, std::size_t{3} << 20}) {
    SCOPED_TRACE(piece);
    std::string expected;
    std::uint32_t x = 12345;
    while (expected.size() < (std::size_t{5} << 20)) {
      std::string chunk(piece, '\0');
      for (char& c : chunk) c = static_cast<char>((x = x * 1103515245u + 12345u) >> 24);
      expected += chunk;
    }
    AtomicFile f;
    ASSERT_TRUE(f.Open(dir.File("big.bin"))) << f.Error();
    for (std::size_t at = 0; at < expected.size(); at += piece) {
      f.Write(std::string_view(expected).substr(at, piece));
    }
    ASSERT_TRUE(f.Commit()) << f.Error();
    EXPECT_TRUE(ReadFile(dir.File("big.bin")) == expected);
  }
}

TEST(BackgroundWriter, AFailedWriteIsReportedAndStopsTheRest) {
  const int fd = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (fd < 0) GTEST_SKIP() << "no /dev/full";
  BackgroundWriter writer(fd);
  std::string buffer(1u << 16, 'x');
  bool accepted = true;
  for (int i = 0; i < 4 && accepted; ++i) {
    accepted = writer.Submit(buffer);
    EXPECT_TRUE(buffer.empty());
    buffer.assign(1u << 16, 'x');
  }
  EXPECT_FALSE(accepted);  // the first failure refuses what comes after it
  EXPECT_EQ(writer.Finish(), ENOSPC);
  ::close(fd);
}

TEST(AtomicFile, TemporaryFilesOfGoneProcessesAreRemovedOnTheFirstOpen) {
  TempDir dir;
  // A process that has ended: its pid names no process any more.
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  ASSERT_GT(child, 0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  const std::string gone = std::to_string(child);
  const std::string alive = std::to_string(::getppid());  // our parent is running
  dir.Write(".out.csv.kroveld-" + gone + "-a1B2c3", "stale");
  dir.Write(".out.csv.kroveld-" + alive + "-a1B2c3", "being written");
  dir.Write(".out.csv.kroveld-" + gone + "-short", "not our name");
  dir.Write("out.csv.kroveld-" + gone + "-a1B2c3", "not hidden: not ours");
  AtomicFile f;
  ASSERT_TRUE(f.Open(dir.File("out.csv"))) << f.Error();
  f.Abort();
  FolderListing listing;
  ASSERT_TRUE(ListFolder(dir.path(), listing));
  std::vector<std::string> expected = {".out.csv.kroveld-" + gone + "-short",
                                       ".out.csv.kroveld-" + alive + "-a1B2c3",
                                       "out.csv.kroveld-" + gone + "-a1B2c3"};
  std::sort(listing.files.begin(), listing.files.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(listing.files, expected);
}

TEST(AtomicFile, UnwritableFolderGivesAClearError) {
  TempDir dir;
  const std::string missing = dir.File("no/such/folder/out.csv");
  AtomicFile f;
  EXPECT_FALSE(f.Open(missing));
  EXPECT_NE(f.Error().find(missing), std::string::npos) << f.Error();
  EXPECT_NE(f.Error().find("No such file or directory"), std::string::npos) << f.Error();
  f.Write("ignored");
  EXPECT_FALSE(f.Commit());

  if (::geteuid() != 0) {  // root writes anywhere
    const std::string locked = dir.File("locked");
    CreateFolderTree(locked);
    const std::string target = dir.Write("locked/out.csv", "keep");
    ::chmod(locked.c_str(), 0555);
    AtomicFile g;
    EXPECT_FALSE(g.Open(target));
    EXPECT_NE(g.Error().find("Permission denied"), std::string::npos) << g.Error();
    EXPECT_EQ(ReadFile(target), "keep");
  }

  // A target that is a folder: the rename fails, the folder stays.
  CreateFolderTree(dir.File("isdir"));
  dir.Write("isdir/inside.txt", "x");
  AtomicFile h;
  ASSERT_TRUE(h.Open(dir.File("isdir")));
  h.Write("data");
  EXPECT_FALSE(h.Commit());
  EXPECT_NE(h.Error().find("isdir"), std::string::npos);
  EXPECT_TRUE(FolderExists(dir.File("isdir")));

  AtomicFile p;  // /proc takes no new files, not even for root
  EXPECT_FALSE(p.Open("/proc/version"));
  EXPECT_NE(p.Error().find("/proc/version"), std::string::npos);
}

}  // namespace
}  // namespace kroveld
