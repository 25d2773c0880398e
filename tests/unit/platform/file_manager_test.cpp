#include "vorlu/platform/linux/linux_file_manager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

const Ownership plain{0640, "", ""};

/// The disk is full beyond `bytes` a file while this lives.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int);
};

class FileManagerTest : public testing::Test {
 protected:
  std::vector<std::string> names(const std::string& path = "/") {
    auto listed = files_.list(path);
    return listed ? *listed : std::vector{listed.error()};
  }
  struct stat statOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat((root_ / path).c_str(), &status), 0) << path;
    return status;
  }
  void link(const std::string& target, const std::string& path) {
    ASSERT_EQ(::symlink(target.c_str(), (root_ / path).c_str()), 0);
  }
  void pipe(const std::string& path) { ASSERT_EQ(::mkfifo((root_ / path).c_str(), 0644), 0); }

  TemporaryFolder root_;
  LinuxHost host_{RootFolder(root_.path())};
  LinuxFileManager files_{RootFolder(root_.path()), host_};
};

TEST_F(FileManagerTest, OnlyRegularFilesAreOpened) {
  writeFile(root_ / "/secret", "secret");
  link("secret", "/link");
  pipe("/pipe");
  const int reader = ::open((root_ / "/pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  for (const auto& [path, error] : std::vector<std::pair<std::string, int>>{
           {"/link", ELOOP}, {"/pipe", EINVAL}, {"/", EISDIR}, {"/none", ENOENT}, {"/secret/below", ENOTDIR}}) {
    const auto text = files_.read(path);
    ASSERT_FALSE(text) << path;
    EXPECT_EQ(text.failure().code, error) << path;
    EXPECT_THAT(text.error(), StartsWith(path + ": "));
    EXPECT_FALSE(files_.sha256(path)) << path;
    EXPECT_TRUE(path == "/none" || !files_.append(path, "x", plain)) << path;
  }
  ::close(reader);
  EXPECT_EQ(readFile(root_ / "/secret"), "secret");
}

TEST_F(FileManagerTest, ReadKeepsToTheCapAndLeavesSpareBytes) {
  const std::pair<std::size_t, std::size_t> sizesAndCaps[] = {{0, 0}, {10, 10}, {70, 100}, {300'000, 300'000}};
  for (const auto& [size, cap] : sizesAndCaps) {
    writeFile(root_ / "/file", std::string(size, 'v'));
    const auto text = files_.read("/file", cap);
    EXPECT_EQ(*text, std::string(size, 'v'));
    EXPECT_GE(text->capacity(), size + 64);
  }
  EXPECT_EQ(files_.read("/file", 299'999).failure().code, EFBIG);
  // A file that announces no size still has bytes and still has a cap.
  LinuxHost host{RootFolder()};
  LinuxFileManager machine{RootFolder(), host};
  EXPECT_THAT(*machine.read("/proc/self/status"), StartsWith("Name:"));
  EXPECT_EQ(machine.read("/proc/self/status", 20).failure().code, EFBIG);
}

TEST_F(FileManagerTest, WriteReplacesWholeOrNotAtAll) {
  writeFile(root_ / "/target", "old");
  link("target", "/link");
  const auto before = statOf("/target").st_ino;
  ASSERT_TRUE(files_.writeAtomically("/target", "new", {0604, "root", "no-such-group"}));
  EXPECT_EQ(readFile(root_ / "/target"), "new");
  EXPECT_EQ(statOf("/target").st_mode & 07777, 0604u);
  EXPECT_NE(statOf("/target").st_ino, before);

  {
    const SmallDisk disk(1000);
    const auto status = files_.writeAtomically("/target", std::string(5000, 'x'), plain);
    ASSERT_FALSE(status);
    EXPECT_EQ(status.failure().code, EFBIG);
  }
  EXPECT_EQ(readFile(root_ / "/target"), "new");
  EXPECT_FALSE(files_.writeAtomically("/none/file", "x", plain));
  ASSERT_TRUE(files_.createDirectory("/folder", plain));
  EXPECT_FALSE(files_.writeAtomically("/folder", "x", plain));
  EXPECT_THAT(names(), ElementsAre("folder", "link", "target")) << "no temporary file stays";

  ASSERT_TRUE(files_.writeAtomically("/link", "own", plain)) << "a link is replaced, not followed";
  EXPECT_EQ(files_.info("/link")->kind, FileKind::regular);
  EXPECT_EQ(readFile(root_ / "/target"), "new");
}

TEST_F(FileManagerTest, EnumerationOrderAndPackages) {
  for (const char* path : {"/t/b.txt", "/t/a/z", "/t/A.app/Contents/x", "/t/c.PKG/inside", "/t/a/In.prefPane/x",
                           "/t/flat.pkg", "/t/.hidden/file", "/t/.app/file"})
    writeFile(root_ / path, "x");
  link("a", "/t/link");
  pipe("/t/pipe");
  std::vector<std::string> lines;
  auto items = files_.enumerate("/t");
  for (const TreeItem& item : *items)
    lines.push_back(item.relativePath + " " + "fdlo"[static_cast<int>(item.kind)] + (item.package ? " package" : ""));
  EXPECT_THAT(lines, ElementsAre(".app d", ".app/file f", ".hidden d", ".hidden/file f", "A.app d package", "a d",
                                 "a/In.prefPane d package", "a/z f", "b.txt f", "c.PKG d package", "flat.pkg f",
                                 "link l", "pipe o"));
  EXPECT_FALSE(files_.enumerate("/t/b.txt"));
  EXPECT_FALSE(files_.enumerate("/none"));
}

TEST_F(FileManagerTest, RemoveTakesTreesButNeverFollowsLinks) {
  writeFile(root_ / "/keep/file", "x");
  writeFile(root_ / "/tree/a/b/file", "x");
  link("../keep", "/tree/link");
  link("keep", "/alone");
  ASSERT_TRUE(files_.remove("/tree/"));
  ASSERT_TRUE(files_.remove("/alone"));
  ASSERT_TRUE(files_.remove("/never/was"));
  ASSERT_TRUE(files_.remove("/keep/file/below"));
  EXPECT_FALSE(files_.remove("/"));
  EXPECT_FALSE(files_.remove("/keep/.."));
  EXPECT_THAT(names(), ElementsAre("keep"));
  EXPECT_TRUE(files_.exists("/keep/file"));
}

TEST_F(FileManagerTest, CopyKeepsWhatAnApplicationNeeds) {
  const std::string program = "/a.app/Contents/MacOS/a";
  writeFile(root_ / program, "program");
  for (int i = 0; i < 40; ++i) writeFile(root_ / ("/a.app/Contents/Resources/" + std::to_string(i)), "r");
  writeFile(root_ / "/a.app/big", std::string(3'000'000, 'b'));
  link("Contents/MacOS/a", "/a.app/current");
  link("/nowhere", "/a.app/dangling");
  ASSERT_EQ(::chmod((root_ / program).c_str(), 04751), 0);
  const bool attributes = ::setxattr((root_ / program).c_str(), "user.test", "v", 1, 0) == 0;
  const timespec times[2] = {{1'500'000'000, 5}, {1'500'000'001, 7}};
  for (const char* path : {"/a.app/Contents/MacOS/a", "/a.app/Contents/MacOS", "/a.app/current"})
    ASSERT_EQ(::utimensat(AT_FDCWD, (root_ / path).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);

  ASSERT_TRUE(files_.copyTree("/a.app", "/b.app"));
  EXPECT_EQ(names("/b.app/Contents/Resources").size(), 40u);
  EXPECT_EQ(*files_.sha256("/b.app/big"), *files_.sha256("/a.app/big"));
  EXPECT_EQ(statOf("/b.app/Contents/MacOS/a").st_mode & 07777, 04751u);
  EXPECT_EQ(std::filesystem::read_symlink(root_ / "/b.app/dangling"), "/nowhere");
  for (const char* path : {"/b.app/Contents/MacOS/a", "/b.app/Contents/MacOS", "/b.app/current"})
    EXPECT_EQ(files_.info(path)->modified, 1'500'000'001'000'000'007) << path;
  char value = 0;
  EXPECT_TRUE(!attributes || ::getxattr((root_ / "/b.app/Contents/MacOS/a").c_str(), "user.test", &value, 1) == 1);
}

TEST_F(FileManagerTest, GrantsGoAndAllElseStays) {
  writeFile(root_ / "/folder/file", "x");
  link("folder/file", "/link");
  using namespace std::string_literals;
  const std::string list =
      "\2\0\0\0\1\0\7\0\377\377\377\377\2\0\7\0\1\0\0\0\4\0\5\0\377\377\377\377\20\0\7\0\377\377\377\377\40\0\5\0\377\377\377\377"s;
  const std::string capability = "\1\0\0\2\2"s + std::string(15, '\0');
  const struct {
    const char *path, *name;
    std::string value;
    bool stays;
  } attributes[] = {{"/folder", "system.posix_acl_access", list, false},
                    {"/folder", "system.posix_acl_default", list, false},
                    {"/folder/file", "system.posix_acl_access", list, false},
                    {"/folder/file", "security.capability", capability, false},
                    {"/folder/file", "user.test", "v", true}};
  for (const auto& a : attributes)
    if (::setxattr((root_ / a.path).c_str(), a.name, a.value.data(), a.value.size(), 0) != 0)
      GTEST_SKIP() << "this user, or the file system of " << root_.path() << ", can't give " << a.name
                   << " to be taken away";
  ASSERT_EQ(::chmod((root_ / "/folder").c_str(), 02775), 0);
  ASSERT_EQ(::chmod((root_ / "/folder/file").c_str(), 06754), 0);

  for (const char* path : {"/folder", "/folder/file", "/link"}) EXPECT_TRUE(files_.dropGrants(path)) << path;
  for (std::size_t i = 0; i < std::size(attributes); ++i)
    EXPECT_EQ(::getxattr((root_ / attributes[i].path).c_str(), attributes[i].name, nullptr, 0) >= 0,
              attributes[i].stays)
        << attributes[i].name;
  EXPECT_EQ(statOf("/folder").st_mode & 07777, 02755U) << "the group had less than the mask";
  EXPECT_EQ(statOf("/folder/file").st_mode & 07777, 0754U);
  EXPECT_EQ(files_.dropGrants("/none").failure().code, ENOENT);
}

TEST_F(FileManagerTest, FailedCopyLeavesNothing) {
  writeFile(root_ / "/tree/a", "small");
  writeFile(root_ / "/tree/b", std::string(100'000, 'b'));
  writeFile(root_ / "/there", "old");
  EXPECT_EQ(files_.copyTree("/tree", "/there").failure().code, EEXIST);
  EXPECT_EQ(files_.copyTree("/tree", "/tree/inside").failure().code, EINVAL);
  EXPECT_EQ(files_.copyTree("/none", "/copy").failure().code, ENOENT);
  {
    const SmallDisk disk(50'000);
    const auto copied = files_.copyTree("/tree", "/copy");
    ASSERT_FALSE(copied);
    EXPECT_THAT(copied.error(), StartsWith("/tree/b: "));
  }
  pipe("/tree/pipe");
  EXPECT_FALSE(files_.copyTree("/tree", "/copy"));
  EXPECT_THAT(names(), ElementsAre("there", "tree"));
  EXPECT_EQ(readFile(root_ / "/there"), "old");
}

}  // namespace
}  // namespace vorlu::test
