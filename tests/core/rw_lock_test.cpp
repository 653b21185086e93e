#include "core/rw_lock.h"

#include <gtest/gtest.h>

#include <thread>

namespace ovix {
namespace {

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
