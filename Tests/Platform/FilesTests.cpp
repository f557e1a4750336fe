#include "Optrella/Platform/Files.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "Child.hpp"

namespace {

using namespace Optrella::Platform;

// A new directory, which is the current one while a test runs and is removed with all in it.
class Files : public testing::Test {
protected:
    void SetUp() override {
        before_ = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        std::string name = testing::TempDir() + "optrella-files-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        ASSERT_EQ(::chdir(name.c_str()), 0);
        char* real = ::realpath(".", nullptr);
        directory = real;
        std::free(real);
        ::close(::open("file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        ASSERT_EQ(::mkdir("directory", 0755), 0);
        ASSERT_EQ(::symlink("file", "link-to-file"), 0);
        ASSERT_EQ(::symlink("directory", "link-to-directory"), 0);
        ASSERT_EQ(::symlink("nothing", "dangling"), 0);
    }

    void TearDown() override {
        EXPECT_EQ(::chdir(directory.c_str()), 0);
        for (const char* name : {"file", "link-to-file", "link-to-directory", "dangling"}) {
            EXPECT_EQ(::unlink(name), 0) << name;
        }
        EXPECT_EQ(::rmdir("directory"), 0);
        EXPECT_EQ(::fchdir(before_), 0);
        EXPECT_EQ(::rmdir(directory.c_str()), 0);
        ::close(before_);
    }

    // Goes down into new directories with names of that length, and back up, removing them.
    static std::string descend(int depth, std::size_t length) {
        const std::string name(length, 'd');
        std::string path;
        for (int i = 0; i < depth; ++i) {
            EXPECT_EQ(::mkdir(name.c_str(), 0755), 0);
            EXPECT_EQ(::chdir(name.c_str()), 0);
            path += '/' + name;
        }
        return path;
    }
    static void ascend(int depth, std::size_t length) {
        const std::string name(length, 'd');
        for (int i = 0; i < depth; ++i) {
            EXPECT_EQ(::chdir(".."), 0);
            EXPECT_EQ(::rmdir(name.c_str()), 0);
        }
    }

    std::string directory;

private:
    int before_ = -1;
};

TEST_F(Files, ExistWhetherFileOrDirectory) {
    EXPECT_TRUE(fileExists("file"));
    EXPECT_TRUE(fileExists("directory"));
    EXPECT_TRUE(fileExists("/"));
    EXPECT_TRUE(fileExists((directory + "/file").c_str()));
}

TEST_F(Files, DoNotExistWithoutAName) {
    EXPECT_FALSE(fileExists("nothing"));
    EXPECT_FALSE(fileExists(""));
    EXPECT_FALSE(fileExists("nothing/file"));
}

TEST_F(Files, ExistThroughALink) {
    EXPECT_TRUE(fileExists("link-to-file"));
    EXPECT_TRUE(fileExists("link-to-directory"));
}

TEST_F(Files, DoNotExistThroughADanglingLink) { EXPECT_FALSE(fileExists("dangling")); }

TEST_F(Files, DoNotExistThroughALinkToItself) {
    ASSERT_EQ(::symlink("loop", "loop"), 0);
    EXPECT_FALSE(fileExists("loop"));
    EXPECT_FALSE(isDirectory("loop"));
    ::unlink("loop");
}

TEST_F(Files, DoNotExistWithinAFile) {
    EXPECT_FALSE(fileExists("file/"));
    EXPECT_FALSE(fileExists("file/file"));
}

TEST_F(Files, DoNotExistByTooLongAPath) {
    // It names the root, if anything.
    EXPECT_FALSE(fileExists(std::string(5000, '/').c_str()));
    EXPECT_FALSE(isDirectory(std::string(5000, '/').c_str()));
}

TEST_F(Files, DoNotExistByTooLongAName) { EXPECT_FALSE(fileExists(std::string(256, 'a').c_str())); }

TEST_F(Files, DoNotExistInADirectoryThatMayNotBeSearched) {
    ASSERT_EQ(::chmod(".", 0755), 0);
    ASSERT_EQ(::mkdir("closed", 0700), 0);
    ::close(::open("closed/file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_TRUE(fileExists("closed/file"));
    ASSERT_EQ(::chmod("closed", 0), 0);
    const int code = Tests::exitCodeOf([] {
        if (!Tests::becomeOrdinaryUser()) return Tests::notPossibleHere;
        return (fileExists("closed/file") ? 1 : 0) + (fileExists("closed") ? 0 : 2);
    });
    ASSERT_EQ(::chmod("closed", 0700), 0);
    ::unlink("closed/file");
    ::rmdir("closed");
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "root cannot become another user here";
    EXPECT_EQ(code, 0);
}

TEST_F(Files, ExistWithoutThePermissionToReadThem) {
    ASSERT_EQ(::chmod(".", 0755), 0);
    ASSERT_EQ(::chmod("file", 0), 0);
    const int code = Tests::exitCodeOf([] {
        if (!Tests::becomeOrdinaryUser()) return Tests::notPossibleHere;
        return fileExists("file") ? 0 : 1;
    });
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "root cannot become another user here";
    EXPECT_EQ(code, 0);
}

TEST_F(Files, ExistByNamesOfAnyBytes) {
    const char* name = "\xff\xfe \xc3\xa9";
    const int file = ::open(name, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (file < 0) GTEST_SKIP() << "this file system takes UTF-8 names alone";
    ::close(file);
    EXPECT_TRUE(fileExists(name));
    EXPECT_FALSE(fileExists("\xff\xfe e\xcc\x81"));
    ::unlink(name);
}

TEST_F(Files, ExistWithASizeAndATimeOfMoreThan32Bits) {
    ASSERT_EQ(::truncate("file", off_t{5} << 30), 0);
    EXPECT_TRUE(fileExists("file"));
    ASSERT_EQ(::truncate("file", 0), 0);

    const timespec late[2] = {{time_t{5} << 30, 0}, {time_t{5} << 30, 0}};
    for (const char* name : {"file", "directory"}) {
        ASSERT_EQ(::utimensat(AT_FDCWD, name, late, 0), 0);
        EXPECT_TRUE(fileExists(name)) << name;
    }
    EXPECT_TRUE(isDirectory("directory"));
}

TEST_F(Files, AreDirectoriesOnlyThemselves) {
    EXPECT_TRUE(isDirectory("directory"));
    EXPECT_TRUE(isDirectory("directory/"));
    EXPECT_TRUE(isDirectory("."));
    EXPECT_TRUE(isDirectory("/"));
    EXPECT_FALSE(isDirectory("file"));
    EXPECT_FALSE(isDirectory("nothing"));
    EXPECT_FALSE(isDirectory(""));
}

TEST_F(Files, AreNoDirectoriesThroughALink) {
    EXPECT_FALSE(isDirectory("link-to-directory"));
    EXPECT_FALSE(isDirectory("link-to-file"));
    EXPECT_FALSE(isDirectory("dangling"));
}

// ---- The current directory ----

TEST_F(Files, CurrentDirectoryIsAbsoluteAndWithoutLinks) {
    EXPECT_EQ(currentDirectory(), directory);
    ASSERT_EQ(::chdir("link-to-directory"), 0);
    EXPECT_EQ(currentDirectory(), directory + "/directory");
}

TEST_F(Files, CurrentDirectoryMayBeTheRoot) {
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(currentDirectory(), "/");
}

TEST_F(Files, CurrentDirectoryIsWholeAtEveryLength) {
    // Past the lengths of a buffer that grows.
    for (std::size_t length = 200; length < 255; ++length) {
        const std::string path = directory + descend(1, length);
        EXPECT_EQ(currentDirectory(), path);
        ascend(1, length);
    }
}

TEST_F(Files, CurrentDirectoryMayHaveALongerPathThanTheKernelTells) {
    const std::string path = directory + descend(20, 250);
    EXPECT_GT(path.size(), 5000u);
    EXPECT_EQ(currentDirectory(), path);
    ascend(20, 250);
}

TEST_F(Files, CurrentDirectoryIsNothingOnceRemoved) {
    ASSERT_EQ(::mkdir("gone", 0755), 0);
    ASSERT_EQ(::chdir("gone"), 0);
    ASSERT_EQ(::rmdir("../gone"), 0);
    EXPECT_EQ(currentDirectory(), std::nullopt);
}

TEST_F(Files, CurrentDirectoryIsNothingOutsideTheRoot) {
    const int code = Tests::exitCodeOf([] {
        if (::chroot("directory") != 0) return Tests::notPossibleHere;
        return currentDirectory() ? 1 : 0;
    });
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "only root may change the root";
    EXPECT_EQ(code, 0);
}

}  // namespace
