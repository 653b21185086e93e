#include "apps/ovix/output/output_file.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "app_files.h"

namespace ovix::app {
namespace {

using namespace test;
using Names = std::vector<std::string>;

TEST(OutputFile, AppearsWholeOrNotAtAll) {
    CTestFolder folder;
    const auto target = folder.At("out");
    {
        COutputFile file(target, false);
        file.Write("abandoned", 9);
        EXPECT_FALSE(std::filesystem::exists(target));
    }
    EXPECT_EQ(folder.Names(), Names{});
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
    EXPECT_EQ(folder.Names(), Names{"out"});
    EXPECT_EQ(ReadText(target), "0xy345");
}

TEST(OutputFile, ReplacesOnlyWhenTold) {
    CTestFolder folder;
    const auto target = folder.At("out");
    WriteText(target, "old");
    std::string line;
    EXPECT_EQ(ExitOf([&] { COutputFile(target, false); }, &line), ExitFile);
    EXPECT_EQ(line, target.string() + ": exists already; --overwrite replaces it");
    {
        COutputFile file(target, true);
        file.Write("new", 3);
        EXPECT_EQ(ReadText(target), "old");
        file.Commit();
    }
    EXPECT_EQ(ReadText(target), "new");
    EXPECT_EQ(ExitOf([] { COutputFile("/dev/null", true); }), ExitFile);  // what is no regular file is not replaced

    // One that came into being while ours was written is not ours to replace either.
    const auto late = folder.At("late");
    const auto replace = [&] {
        COutputFile file(late, false);
        WriteText(late, "theirs");
        file.Commit();
    };
    EXPECT_EQ(ExitOf(replace), ExitFile);
    EXPECT_EQ(ReadText(late), "theirs");
    EXPECT_EQ(folder.Names(), (Names{"late", "out"}));
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

TEST(OutputFile, LeavesNothingAfterAnInterrupt) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        CTestFolder folder;
        const int status = StatusOfChild([&] {
            std::signal(signal, SIG_DFL);  // whatever the tests were told
            InstallInterruptCleanup();
            COutputFile done(folder.At("done"), false);
            done.Commit();
            COutputFile first(folder.At("first"), false);
            COutputFile second(folder.At("second"), false);
            second.Write("x", 1);
            // A process started meanwhile owns none of them.
            if (WTERMSIG(StatusOfChild([&] { ::raise(signal); })) != signal) ::_exit(1);
            if (folder.Names().size() != 3) ::_exit(2);
            ::raise(signal);
        });
        // A shell's loop ends with a child that a signal ended, and goes on after one that left by itself.
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_EQ(folder.Names(), Names{"done"});
    }
}

TEST(OutputFile, OutlivesAnIgnoredSignalAndIsRemovedByABrokenPipe) {
    CTestFolder folder;
    const int status = StatusOfChild([&] {
        std::signal(SIGHUP, SIG_IGN);  // as nohup does
        InstallInterruptCleanup();
        COutputFile done(folder.At("done"), false);
        ::raise(SIGHUP);
        done.Commit();
        COutputFile unfinished(folder.At("unfinished"), false);
        ::raise(SIGPIPE);
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) << status;
    EXPECT_EQ(folder.Names(), Names{"done"});
}

}  // namespace
}  // namespace ovix::app
