#include "apps/ovix/output/output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "app_files.h"
#include "apps/ovix/app_error.h"

namespace ovix::app {
namespace {

using test::ContentOf;
using test::NamesIn;
using test::PathIn;
using Names = std::vector<std::string>;

std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const CAppError& error) {
        EXPECT_EQ(error.Exit(), ExitFile);
        return error.what();
    }
    return "no error";
}

TEST(OutputFile, AppearsWholeOrNotAtAll) {
    test::CTestFolder folder;
    const auto target = PathIn(folder, "out");
    {
        COutputFile file(target, false);
        file.Write("abandoned", 9);
        EXPECT_FALSE(std::filesystem::exists(target));
    }
    EXPECT_EQ(NamesIn(folder), Names{});
    {
        COutputFile file(target, false);
        file.Write("0123", 4);
        file.WriteAt(1, "xy", 2);
        file.Write("45", 2);
        char back[8] = {};
        EXPECT_EQ(file.ReadAt(3, back, sizeof back), 3u);
        EXPECT_STREQ(back, "345");
        file.Commit();
    }
    EXPECT_EQ(NamesIn(folder), Names{"out"});
    EXPECT_EQ(ContentOf(target), "0xy345");
}

TEST(OutputFile, ReplacesOnlyWhenTold) {
    test::CTestFolder folder;
    const auto target = PathIn(folder, "out");
    test::WriteContent(target, "old");
    EXPECT_EQ(ErrorOf([&] { COutputFile(target, false); }),
              target.string() + ": exists already; --overwrite replaces it");
    {
        COutputFile file(target, true);
        file.Write("new", 3);
        EXPECT_EQ(ContentOf(target), "old");
        file.Commit();
    }
    EXPECT_EQ(ContentOf(target), "new");

    // One that came into being while ours was written is not ours to replace either.
    const auto late = PathIn(folder, "late");
    EXPECT_NE(ErrorOf([&] {
                  COutputFile file(late, false);
                  test::WriteContent(late, "theirs");
                  file.Commit();
              }),
              "no error");
    EXPECT_EQ(ContentOf(late), "theirs");
    EXPECT_EQ(NamesIn(folder), (Names{"late", "out"}));
}

TEST(OutputFile, SaysInOneLineWhyNot) {
    test::CTestFolder folder;
    std::filesystem::create_directory(PathIn(folder, "directory"));
    const struct {
        const char* target;
        const char* reason;
    } cases[] = {
        {"directory", ": expected a regular file or none"},
        {"missing/out", ": cannot create it: No such file or directory"},
        {"directory/../../nowhere/x", ": cannot create it: No such file or directory"},
    };
    for (const auto& c : cases) {
        const auto target = PathIn(folder, c.target);
        EXPECT_EQ(ErrorOf([&] { COutputFile(target, true); }), target.string() + c.reason);
    }
    EXPECT_NE(ErrorOf([] { COutputFile("/dev/null", true); }), "no error");
}

/// Runs in a process of its own; answers how it ended.
int StatusOfChild(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(99);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(OutputFile, LeavesNothingOnAFullMedium) {
    test::CTestFolder folder;
    const auto target = PathIn(folder, "out");
    const int status = StatusOfChild([&] {
        InstallInterruptCleanup();
        const rlimit limit{100'000, 100'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const std::string line = ErrorOf([&] {
            const std::vector<char> bytes(60'000);
            COutputFile file(target, false);
            file.Write(bytes.data(), bytes.size());
            file.Write(bytes.data(), bytes.size());
            file.Commit();
        });
        ::_exit(line == target.string() + ": cannot write: File too large" ? 0 : 1);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(NamesIn(folder), Names{});
}

TEST(OutputFile, LeavesNothingAfterAnInterrupt) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        test::CTestFolder folder;
        const int status = StatusOfChild([&] {
            InstallInterruptCleanup();
            COutputFile done(PathIn(folder, "done"), false);
            done.Commit();
            COutputFile first(PathIn(folder, "first"), false);
            COutputFile second(PathIn(folder, "second"), false);
            second.Write("x", 1);
            // A process started meanwhile owns none of them.
            if (WEXITSTATUS(StatusOfChild([&] { ::raise(signal); })) != ExitInterrupted) ::_exit(1);
            if (NamesIn(folder).size() != 3) ::_exit(2);
            ::raise(signal);
        });
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), ExitInterrupted);
        EXPECT_EQ(NamesIn(folder), Names{"done"});
    }
}

}  // namespace
}  // namespace ovix::app
