#include "apps/ovix/pipeline/decoder_child.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <utility>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

constexpr std::chrono::seconds kPatience{20};

CFault NoChild(const char* action) { return SystemFault(ExitBadData, "", action, errno); }

/// Waits until there is an answer or the other end is gone; false when the time is over. A signal does not cut it
/// short.
bool AwaitAnswer(int socket) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd waiting{socket, POLLIN, 0};
        if (::poll(&waiting, 1, static_cast<int>(left.count())) > 0) return true;
    }
}

}  // namespace

CSharedMemory::CSharedMemory(std::size_t bytes) : size_(bytes) {
    void* memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw NoChild("cannot share memory with the decoder");
    data_ = static_cast<u8*>(memory);
}

CSharedMemory::~CSharedMemory() {
    if (data_) ::munmap(data_, size_);
}

CDecoderChild::CDecoderChild(std::size_t pixelBytes, Work work) : work_(std::move(work)), pixels_(pixelBytes) {}

CDecoderChild::~CDecoderChild() { Stop(); }

bool CDecoderChild::Run(std::span<const u8> frame) {
    if (frame.size() > frame_.size()) {
        Stop();                                                   // it knows the old memory only
        frame_ = CSharedMemory(frame.size() + frame.size() / 4);  // the next compressed frame may be somewhat larger
    }
    if (pid_ < 0) Start();
    std::memcpy(frame_.data(), frame.data(), frame.size());

    const u64 size = frame.size();
    u8 answer = 0;
    const bool sent = ::send(socket_, &size, sizeof size, MSG_NOSIGNAL) == ssize_t{sizeof size};
    if (sent && !AwaitAnswer(socket_)) {
        Stop();
        throw CFault({.problem = fmt::format("the decoder gave no answer for {} seconds", kPatience.count())});
    }
    if (!sent || ::recv(socket_, &answer, 1, 0) != 1)
        throw CFault({.problem = "the compressed pixels are damaged: the decoder " + Stop()});
    return answer != 0;
}

void CDecoderChild::Start() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw NoChild("cannot talk to the decoder");
    pid_ = ::fork();
    if (pid_ == 0) {
        ::close(ends[0]);
        Serve(ends[1]);
    }
    ::close(ends[1]);
    if (pid_ < 0) {
        ::close(ends[0]);
        throw NoChild("cannot start the decoder");
    }
    socket_ = ends[0];
}

std::string CDecoderChild::Stop() {
    if (pid_ < 0) return {};
    ::kill(pid_, SIGKILL);  // one that died before keeps the status that it died with
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    ::close(socket_);
    socket_ = pid_ = -1;
    if (WIFSIGNALED(status))
        return fmt::format("was ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
    return fmt::format("ended with status {}", WEXITSTATUS(status));
}

void CDecoderChild::Serve(int socket) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGINT, SIG_IGN);  // the parent decides
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    // What a library says before it aborts is no line of ours.
    if (const int nowhere = ::open("/dev/null", O_WRONLY); nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);

    u64 size = 0;
    while (::recv(socket, &size, sizeof size, MSG_WAITALL) == ssize_t{sizeof size}) {
        const u8 answer = work_({frame_.data(), size}, pixels_.data()) ? 1 : 0;
        if (::send(socket, &answer, 1, MSG_NOSIGNAL) != 1) break;
    }
    ::_exit(0);
}

}  // namespace ovix::app
