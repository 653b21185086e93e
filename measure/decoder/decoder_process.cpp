#include "measure/decoder/decoder_process.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <vector>

#include "measure/decoder/protocol.h"
#include "measure/error.h"
#include "measure/text.h"

namespace ovix::measure {

using namespace decode_protocol;

namespace {

/// The program that decodes compressed frames: `ovix-decode` beside `ovix.measure.so`, where it is installed and in the
/// build tree.
std::string HelperPath() {
    // The address of any object of this library will do.
    static constexpr char kAnchor = 0;
    Dl_info library{};
    if (!::dladdr(&kAnchor, &library) || !library.dli_fname)
        throw CError({.id = EError::HelperMissing, .problem = "cannot find the place of the measuring library"});
    std::error_code ignored;
    return std::filesystem::absolute(library.dli_fname, ignored).parent_path() / "ovix-decode";
}

CError Failed(const char* doing, int systemError) {
    return CError({.id = EError::SystemFailed, .problem = doing, .systemError = systemError});
}

CError Missing(const std::string& program, const char* problem, int systemError) {
    return CError({.id = EError::HelperMissing,
                   .file = program,
                   .problem = problem,
                   .advice = "install it beside the library",
                   .systemError = systemError});
}

CError Damaged(std::string problem) {
    return CError({.id = EError::PixelsDamaged, .problem = "the compressed pixels are damaged: " + std::move(problem)});
}

/// Out of the way of the numbers under which the helper finds its own.
CDescriptor Raised(CDescriptor descriptor) {
    constexpr int kOutOfTheWay = 16;
    CDescriptor raised(::fcntl(descriptor, F_DUPFD_CLOEXEC, kOutOfTheWay));
    if (raised < 0) throw Failed("cannot talk to the decoder", errno);
    return raised;
}

std::string TypeText(const GUID& type) {
    u8 bytes[16];
    StoreGuid(bytes, type);
    std::string text;
    for (const u8 byte : bytes) text += Hex(byte, 2);
    return text;
}

/// What a spawned program gets: the two descriptors, none other, and signals as they are by default.
class CSpawnSettings {
  public:
    CSpawnSettings(int socket, int memory) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        // What a library says before it aborts is no line of ours.
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, socket, kSocket);
        ::posix_spawn_file_actions_adddup2(&actions_, memory, kMemory);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, kMemory + 1);
        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    CSpawnSettings(const CSpawnSettings&) = delete;
    CSpawnSettings& operator=(const CSpawnSettings&) = delete;
    ~CSpawnSettings() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }

    int Spawn(pid_t& child, const char* program, char* const* arguments) const {
        return ::posix_spawn(&child, program, &actions_, &attributes_, arguments, environ);
    }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

/// A decoder answers true even when a compressed stream ended early, so the last pixels get values beforehand that no
/// image holds in this order: finding them again says that nobody wrote there.
class CLastPixelsMark {
  public:
    CLastPixelsMark(u16* pixels, u32 count) : at_(pixels + count - Length(count)), length_(Length(count)) {
        for (u32 i = 0; i < length_; ++i) at_[i] = Value(i);
    }
    bool IsUntouched() const {
        u32 same = 0;
        while (same < length_ && at_[same] == Value(same)) ++same;
        return length_ >= kFewest && same == length_;
    }

  private:
    static constexpr u32 kFewest = 8;  // fewer could be met by chance
    static u32 Length(u32 count) { return count < 64 ? count : 64; }
    static u16 Value(u32 i) { return static_cast<u16>((i + 1) * 0x9E3779B9u >> 13); }

    u16* at_;
    u32 length_;
};

}  // namespace

CDecoderProcess::CDecoderProcess(const SFrameFormat& format, std::chrono::milliseconds patience)
    : owner_(::getpid()), patience_(patience), pixelCount_(format.PixelCount()) {
    memory_ = CDescriptor(::memfd_create("ovix-decode", MFD_CLOEXEC));
    if (memory_ < 0) throw Failed("cannot share memory with the decoder", errno);
    memory_ = Raised(std::move(memory_));
    Start(format);
}

CDecoderProcess::~CDecoderProcess() {
    if (IsOurs()) Stop("");
    if (mapped_) ::munmap(mapped_, mappedBytes_);
}

bool CDecoderProcess::IsOurs() const { return owner_ == ::getpid(); }

void CDecoderProcess::Start(const SFrameFormat& format) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failed("cannot talk to the decoder", errno);
    CDescriptor ours(ends[0]), theirs(ends[1]);
    theirs = Raised(std::move(theirs));

    const std::string program = HelperPath();
    std::string arguments[] = {program,
                               kVersion,
                               format.filter,
                               TypeText(format.pixelType),
                               std::to_string(format.width),
                               std::to_string(format.height),
                               std::to_string(owner_)};
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const CSpawnSettings settings(theirs, memory_);
    if (const int error = settings.Spawn(helper_, program.c_str(), argv.data())) {
        helper_ = -1;
        throw Missing(program, "cannot start the program that decodes compressed frames", error);
    }
    socket_ = std::move(ours);
}

void CDecoderProcess::Grow(std::size_t bytes) {
    if (bytes <= mappedBytes_) return;
    const std::size_t wanted = bytes + bytes / 4;  // the next compressed frame may be somewhat larger
    if (::ftruncate(memory_, static_cast<off_t>(wanted)) != 0)
        throw Failed("cannot share memory with the decoder", errno);
    void* memory = ::mmap(nullptr, wanted, PROT_READ | PROT_WRITE, MAP_SHARED, memory_, 0);
    if (memory == MAP_FAILED) throw Failed("cannot share memory with the decoder", errno);
    if (mapped_) ::munmap(mapped_, mappedBytes_);
    mapped_ = static_cast<u8*>(memory);
    mappedBytes_ = wanted;
}

void CDecoderProcess::Decode(std::span<const u8> frame, u16* pixels) {
    const std::size_t pixelBytes = std::size_t{2} * pixelCount_;
    Grow(pixelBytes + frame.size());
    const CLastPixelsMark mark(reinterpret_cast<u16*>(mapped_), pixelCount_);
    std::memcpy(mapped_ + pixelBytes, frame.data(), frame.size());
    u8 answer = kRefused;
    if (!Ask(frame.size(), answer)) {
        if (misfit_) throw Missing(HelperPath(), "the program that decodes compressed frames is of another build", 0);
        throw Damaged("the decoder " + end_);
    }
    served_ = true;
    if (answer != kDecoded) throw Damaged("the decoder does not take them");
    if (mark.IsUntouched()) throw Damaged("the image is not whole");
    std::memcpy(pixels, mapped_, pixelBytes);
}

bool CDecoderProcess::Ask(std::size_t frameBytes, u8& answer) {
    const SRequest request{mappedBytes_, u64{2} * pixelCount_, frameBytes};
    const bool sent = ::send(socket_, &request, sizeof request, MSG_NOSIGNAL) == ssize_t{sizeof request};
    if (sent && !AwaitAnswer()) {
        silent_ = true;
        Stop("gave no answer in time and was ended");
    } else if (!sent || ::recv(socket_, &answer, 1, 0) != 1) {
        Stop("ended", false);
    }
    return IsAlive();
}

/// Waits until there is an answer or the other end is gone; false when the time is over. A signal does not cut it
/// short.
bool CDecoderProcess::AwaitAnswer() const {
    const auto end = std::chrono::steady_clock::now() + patience_;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd waiting{socket_, POLLIN, 0};
        const auto atMost = std::min<i64>(left.count(), std::numeric_limits<int>::max());
        if (::poll(&waiting, 1, static_cast<int>(atMost)) > 0) return true;
    }
}

void CDecoderProcess::Stop(const char* how, bool byForce) {
    end_ = how;
    // Also where a forked process holds the other copy of this end, which it does not know of.
    if (socket_ >= 0) ::shutdown(socket_, SHUT_RDWR);
    socket_ = CDescriptor();
    if (helper_ < 0) return;
    int status = 0;
    // A host that waits for all children may have been faster, and the number belong to another process by now.
    pid_t waited = ::waitpid(helper_, &status, WNOHANG);
    if (waited == 0 && byForce) ::kill(helper_, SIGKILL);
    while (waited == 0 || (waited < 0 && errno == EINTR)) waited = ::waitpid(helper_, &status, 0);
    if (waited == helper_ && !byForce && WIFSIGNALED(status))
        end_ += Say(" by signal ", WTERMSIG(status), " (", ::sigdescr_np(WTERMSIG(status)), ")");
    misfit_ = waited == helper_ && WIFEXITED(status) && WEXITSTATUS(status) == kMisfit;
    helper_ = -1;
}

}  // namespace ovix::measure
