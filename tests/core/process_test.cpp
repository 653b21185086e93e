#include "core/process.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "core/version.h"

namespace ovix {
namespace {

TEST(Version, IsThatOfTheProjectInMacrosAndLibrary) {
    EXPECT_STREQ(OVIX_VERSION_STRING, OVIX_PROJECT_VERSION);
    EXPECT_STREQ(Version(), OVIX_PROJECT_VERSION);
    const std::string numbers = std::to_string(OVIX_VERSION_MAJOR) + '.' + std::to_string(OVIX_VERSION_MINOR) + '.' +
                                std::to_string(OVIX_VERSION_PATCH);
    EXPECT_EQ(numbers, OVIX_PROJECT_VERSION);
}

TEST(RWLock, ExcludesWritersAndSharesNothingWithCopies) {
    CRWLock lock;
    int value = 0;
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 1000; ++i) {
                lock.WriteLock();
                ++value;
                lock.WriteUnlock();
                lock.ReadLock();
                EXPECT_GT(value, i);
                lock.ReadUnlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(value, 4000);

    lock.ReadLock();
    CRWLock copy(lock);
    copy.WriteLock();  // would wait for ever if it were the same lock
    copy = lock;
    copy.WriteUnlock();
    lock.ReadUnlock();
}

}  // namespace
}  // namespace ovix
