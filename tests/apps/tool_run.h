#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app_files.h"

namespace ovix::test {

using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline constexpr const char* kGigE = "K410 IR (GigE)";
/// The options that say how a dump of 64 x 48 pixels is read.
inline Arguments FramesOf(const std::string& type = kGigE) { return {"--pixel-type", type, "--size", "64x48"}; }
inline Arguments Dump(const std::string& type = kGigE) { return Arguments{"dump.raw"} + FramesOf(type); }

struct SToolRun {
    int status = -1;  ///< what it left with; -signal when one ended it
    std::string out;
    std::string error;

    long ErrorLines() const { return std::count(error.begin(), error.end(), '\n'); }
};

/// A folder of its own in which the tool is run as a user would run it.
class CToolFolder : public CTestFolder {
  public:
    /// Standard output goes to `stdoutTo` when given; `fileLimit` is the size beyond which no file can grow.
    SToolRun Run(Arguments arguments, const char* stdoutTo = nullptr, rlim_t fileLimit = RLIM_INFINITY,
                 const std::string& input = "/dev/null") const {
        const std::string out = stdoutTo ? stdoutTo : At(".out").string(), error = At(".error").string();
        const pid_t child = Start(std::move(arguments), out, error, fileLimit, input);
        int status = 0;
        ::waitpid(child, &status, 0);
        SToolRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), stdoutTo ? "" : ReadText(out),
                     ReadText(error)};
        std::error_code ignored;
        if (!stdoutTo) std::filesystem::remove(out, ignored);
        std::filesystem::remove(error, ignored);
        return run;
    }
    /// Run that must be done; answers what came out.
    std::string Do(const Arguments& arguments) const {
        const SToolRun run = Run(arguments);
        EXPECT_EQ(run.status, 0) << run.error;
        return run.out;
    }
    /// The document of a run that must be done.
    app::Json Doc(const Arguments& arguments) const { return app::Json::parse(Do(arguments + Arguments{"--json"})); }
    /// Writes frames to dump.raw; answers what the tool says of them.
    app::Json Synthesise(const Arguments& more = {}, const std::string& type = kGigE) const {
        return Doc(Arguments{"synth", "-o"} + Dump(type) + Arguments{"--count", "3", "--overwrite"} + more);
    }

    /// Answers at once; the process is the caller's to wait for.
    pid_t Start(Arguments arguments, const std::string& out = "/dev/null", const std::string& error = "/dev/null",
                rlim_t fileLimit = RLIM_INFINITY, const std::string& input = "/dev/null") const {
        arguments.insert(arguments.begin(), OVIX_TOOL);
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        const pid_t child = ::fork();
        if (child != 0) return child;
        if (::chdir(At().c_str()) != 0) ::_exit(99);
        ::dup2(::open(input.c_str(), O_RDONLY), 0);
        ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
        ::dup2(::open(error.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        const rlimit limit{fileLimit, fileLimit};
        if (fileLimit != RLIM_INFINITY) ::setrlimit(RLIMIT_FSIZE, &limit);
        ::execv(OVIX_TOOL, argv.data());
        ::_exit(98);
    }
};

}  // namespace ovix::test
