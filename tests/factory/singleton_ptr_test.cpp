#include "core/process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace ovix {
namespace {

struct SCounted {
    SCounted() {
        ++made;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let the others come in meanwhile
    }
    ~SCounted() { std::fprintf(stderr, "deleted after %d made\n", made.load()); }
    static inline std::atomic<int> made = 0;
};

struct SPostCreate {
    static void PostCreate();
};
using CHolder = TSingletonPtr<SCounted, 7, 0, SPostCreate>;

std::atomic<int> scans = 0;
/// What a plug-in scan may do: ask for the instance on this thread, and wait for a thread that asks for it.
void SPostCreate::PostCreate() {
    ++scans;
    SCounted* own = CHolder::GetInstance();
    std::thread([own] { EXPECT_EQ(CHolder::GetInstance(), own); }).join();
}

void Say(void* text) { std::fprintf(stderr, "%s\n", static_cast<const char*>(text)); }
void SayAndRegisterMore(void* text) {
    Say(text);
    Private::DeleteAtExit(const_cast<char*>("last"), 5, Say);
}

[[noreturn]] void LiveAndExit() {
    std::vector<std::thread> threads;
    std::atomic<SCounted*> first = nullptr;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            SCounted* mine = CHolder();
            SCounted* before = nullptr;
            if (!first.compare_exchange_strong(before, mine) && before != mine) std::fprintf(stderr, "two instances\n");
        });
    }
    for (std::thread& thread : threads) thread.join();
    Private::DeleteAtExit(const_cast<char*>("lower"), 6, Say);
    Private::DeleteAtExit(const_cast<char*>("higher"), 100'000, SayAndRegisterMore);
    std::fprintf(stderr, "%d scan\n", scans.load());
    std::exit(0);
}

TEST(SingletonPtr, IsMadeOnceAndDeletedOnceInOrderOfPriority) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(LiveAndExit(), testing::ExitedWithCode(0), "^1 scan\nhigher\ndeleted after 1 made\nlower\nlast\n$");
}

}  // namespace
}  // namespace ovix
