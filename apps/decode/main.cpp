// Decodes the compressed frames of another process, one after the other, so that the end of a decoder is not the end of
// that process. measure/decoder/protocol.h says how the two speak.

#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstring>
#include <exception>
#include <string_view>

#include "core/core.h"
#include "measure/decoder/protocol.h"
#include "reduce/reduce.h"

namespace ovix::measure {

using namespace decode_protocol;

namespace {

template <class T>
bool Parse(std::string_view text, T& value, int base = 10) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size();
}

bool ParseType(std::string_view text, GUID& type) {
    u8 bytes[16] = {};
    if (text.size() != 2 * sizeof bytes) return false;
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        if (!Parse(text.substr(2 * i, 2), bytes[i], 16)) return false;
    }
    type = LoadGuid(bytes);
    return true;
}

class CHelper {
  public:
    bool Take(char** arguments) {
        if (std::string_view(arguments[1]) != kVersion) return false;
        filter_ = CString(arguments[2]);
        return ParseType(arguments[3], type_) && Parse(arguments[4], width_) && Parse(arguments[5], height_) &&
               Parse(arguments[6], parent_) && reduce::filterFactory()->IsRegistered(filter_);
    }

    /// Until the socket is closed. Whoever forked off the parent may hold it open, so its end is looked for as well.
    void Serve() {
        SRequest request;
        while (Await() && ::recv(kSocket, &request, sizeof request, MSG_WAITALL) == ssize_t{sizeof request}) {
            if (!Map(request)) return;
            const u8 answer = Decode(request) ? kDecoded : kRefused;
            if (::send(kSocket, &answer, 1, MSG_NOSIGNAL) != 1) return;
        }
    }

  private:
    bool Await() const {
        constexpr int kMilliseconds = 1000;
        pollfd waiting{kSocket, POLLIN, 0};
        while (::getppid() == parent_) {
            if (::poll(&waiting, 1, kMilliseconds) > 0) return true;
        }
        return false;
    }
    bool Map(const SRequest& request) {
        if (request.memoryBytes == mapped_) return true;
        if (memory_) ::munmap(memory_, mapped_);
        void* memory = ::mmap(nullptr, request.memoryBytes, PROT_READ | PROT_WRITE, MAP_SHARED, kMemory, 0);
        memory_ = memory == MAP_FAILED ? nullptr : static_cast<u8*>(memory);
        mapped_ = request.memoryBytes;
        return memory_ != nullptr;
    }
    bool Decode(const SRequest& request) const {
        try {
            const auto filter = reduce::filterFactory()->Create(filter_);
            reduce::CReduceObjectArray unused;
            u8 preset = 0;
            return filter &&
                   filter->ParseFrame(memory_ + request.frameAt, type_, width_, height_,
                                      static_cast<u32>(request.frameBytes), {memory_, UInt16}, unused, preset);
        } catch (const std::exception&) {
            return false;
        }
    }

    CString filter_;
    GUID type_;
    u16 width_ = 0;
    u16 height_ = 0;
    int parent_ = 0;
    u8* memory_ = nullptr;
    std::size_t mapped_ = 0;
};

}  // namespace

}  // namespace ovix::measure

int main(int count, char** arguments) {
    constexpr int kArguments = 7;
    std::signal(SIGINT, SIG_IGN);  // the parent decides
    std::signal(SIGQUIT, SIG_IGN);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ovix::measure::CHelper helper;
    if (count != kArguments || !helper.Take(arguments)) return ovix::measure::decode_protocol::kMisfit;
    helper.Serve();
    return 0;
}
