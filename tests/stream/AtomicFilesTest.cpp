// Saving a file never writes through a planted link, never leaves a part
// of a file or a temporary behind, writes through the user's own links and
// keeps the file's permissions.
#include "host/stream/AtomicFiles.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/Program.h"

namespace fs = std::filesystem;

namespace {

bool save(const std::string& path, const std::string& text, std::string* why = nullptr) {
  std::string reason;
  const bool ok = writeFileAtomically(path, text, reason);
  if (why) *why = reason;
  return ok;
}

TEST(AtomicFiles, APlantedLinkAtAnyTemporaryNameIsNeverFollowed) {
  testsupport::TempFolder folder;
  const std::string edit = folder.write("promo.json", "old");
  const std::string victim = folder.write("victim", "precious");
  // Where saves of old put their temporary, and a guess at any other.
  fs::create_symlink(victim, edit + ".tmp");
  fs::create_symlink(victim, folder.path(".promo.json.tmp"));
  ASSERT_TRUE(save(edit, "new"));
  EXPECT_EQ(testsupport::readText(victim), "precious");
  EXPECT_EQ(testsupport::readText(edit), "new");
  EXPECT_FALSE(fs::is_symlink(edit)) << "the edit stays a plain file";
}

TEST(AtomicFiles, ALinkedFileIsWrittenThroughAndKeepsItsPermissions) {
  testsupport::TempFolder folder;
  fs::create_directory(folder.path("real"));
  const std::string real = folder.write("real/edit.json", "old");
  ::chmod(real.c_str(), 0600);
  const std::string link = folder.path("edit.json");
  fs::create_symlink("real/edit.json", link);
  ASSERT_TRUE(save(link, "new"));
  EXPECT_TRUE(fs::is_symlink(link)) << "the link stays a link";
  EXPECT_EQ(testsupport::readText(real), "new");
  struct stat st;
  ASSERT_EQ(::stat(real.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0600u);
  EXPECT_TRUE(folder.leftovers().empty());
  // A new file gets what the mask allows.
  const mode_t mask = ::umask(022);
  ASSERT_TRUE(save(folder.path("fresh"), "x"));
  ::umask(mask);
  ASSERT_EQ(::stat(folder.path("fresh").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0644u);
}

TEST(AtomicFiles, WhatCannotBeReplacedIsRefusedWithTheReasonAndLeftAlone) {
  testsupport::TempFolder folder;
  fs::create_directory(folder.path("folder"));
  folder.write("folder/keep", "x");
  const std::string linkToNull = folder.path("null-link");
  fs::create_symlink("/dev/null", linkToNull);
  std::string why;
  for (const std::string& target : {folder.path("folder"), std::string("/dev/null"), linkToNull}) {
    EXPECT_FALSE(save(target, "new", &why)) << target;
    EXPECT_NE(why.find("not a regular file"), std::string::npos) << why;
  }
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_TRUE(fs::is_symlink(linkToNull));
  EXPECT_TRUE(fs::exists(folder.path("folder/keep")));
  // The system's own reason where it refuses.
  EXPECT_FALSE(save(folder.path("missing/out.png"), "new", &why));
  EXPECT_NE(why.find("No such file or directory"), std::string::npos) << why;
  EXPECT_TRUE(folder.leftovers().empty());
}

TEST(AtomicFiles, FilesSavedTogetherAreAllReplacedOrNoneIs) {
  testsupport::TempFolder folder;
  const std::string a = folder.write("a", "old a"), b = folder.write("b", "old b");
  fs::create_directory(folder.path("c"));
  const std::string newA = "new a", newC = "new c";
  std::string why;
  EXPECT_FALSE(
      writeFilesAtomically({{a, newA.data(), newA.size()}, {folder.path("c"), newC.data(), newC.size()}}, why));
  EXPECT_EQ(testsupport::readText(a), "old a");
  EXPECT_TRUE(folder.leftovers().empty());
  const std::string newB = "new b";
  ASSERT_TRUE(writeFilesAtomically({{a, newA.data(), newA.size()}, {b, newB.data(), newB.size()}}, why)) << why;
  EXPECT_EQ(testsupport::readText(a) + testsupport::readText(b), "new anew b");
}

TEST(AtomicFiles, AFullDiskLeavesTheOldFileWithTheSystemsReason) {
  // A file size limit makes the system refuse the write part way, as a full
  // disk does; the limit is set in a child so the test program keeps its own.
  testsupport::TempFolder folder;
  const std::string edit = folder.write("promo.json", "old");
  const std::string reasonFile = folder.path("reason");
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string why;
    const bool saved = save(edit, std::string(1 << 20, 'x'), &why);
    FILE* out = std::fopen(reasonFile.c_str(), "w");
    if (out) {
      std::fputs(why.c_str(), out);
      std::fclose(out);
    }
    _exit(saved ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the save said it succeeded";
  EXPECT_NE(testsupport::readText(reasonFile).find("File too large"), std::string::npos)
      << testsupport::readText(reasonFile);
  EXPECT_EQ(testsupport::readText(edit), "old");
  fs::remove(reasonFile);
  EXPECT_TRUE(folder.leftovers().empty());
}

} // namespace
