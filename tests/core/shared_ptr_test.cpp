#include "core/shared_ptr.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace ovix {
namespace {

struct SBase {
    virtual ~SBase() { ++deleted; }
    static inline int deleted = 0;
};
struct SDerived : SBase {};

int called = 0;
void CountAndDelete(SBase* object) {
    ++called;
    delete object;
}

static_assert(std::is_convertible_v<TSharedPtr<SBase>, bool> && !std::is_convertible_v<TSharedPtr<SBase>, int>);

TEST(SharedPtr, DisposesByItsDeleter) {
    SBase resident;
    const struct {
        const char* what;
        SBase* object;
        TSharedPtr<SBase>::Deleter deleter;
        int deleted;
        int called;
    } cases[] = {
        {"the virtual destructor", new SDerived, nullptr, 1, 0},
        {"a function", new SDerived, CountAndDelete, 1, 1},
        {"nothing for an object that lives elsewhere", &resident, TSharedPtr<SBase>::DoNotDelete(), 0, 0},
        {"nothing for no object", nullptr, CountAndDelete, 0, 0},
    };
    for (const auto& c : cases) {
        SBase::deleted = called = 0;
        {
            TSharedPtr<SBase> first(c.object, c.deleter);
            EXPECT_EQ(first.RefCount(), c.object ? 1 : 0) << c.what;
            TSharedPtr<SBase> second(first), third;
            third = second;
            EXPECT_EQ(first.RefCount(), c.object ? 3 : 0) << c.what;
            first = 0;
            const TSharedPtr<SBase>& itself = third;
            third = itself;
            EXPECT_TRUE(third == c.object) << c.what;
            EXPECT_EQ(SBase::deleted, 0) << c.what;
        }
        EXPECT_EQ(SBase::deleted, c.deleted) << c.what;
        EXPECT_EQ(called, c.called) << c.what;
    }
}

TEST(SharedPtr, CastsShareTheObject) {
    struct SOther : SBase {};
    SBase::deleted = called = 0;
    {
        const TSharedPtr<SBase> base(new SDerived, CountAndDelete);
        TSharedPtr<SDerived> derived = base.Cast<SDerived>();
        EXPECT_EQ(base.RefCount(), 2);
        EXPECT_TRUE(base == TSharedPtr<SBase>(derived));
        EXPECT_FALSE(base.Cast<SOther>());
        EXPECT_FALSE(TSharedPtr<SBase>().Cast<SDerived>());
        EXPECT_EQ(base.RefCount(), 2);
    }
    EXPECT_EQ(SBase::deleted, 1);
    EXPECT_EQ(called, 1);
}

TEST(SharedPtr, DetachLeavesTheObjectToTheCaller) {
    SBase::deleted = 0;
    TSharedPtr<SBase> pointer(new SBase);
    SBase* object = pointer.Detach();
    EXPECT_TRUE(pointer == 0);
    pointer = object;
    EXPECT_EQ(pointer.RefCount(), 1);
    pointer = new SBase;
    EXPECT_EQ(SBase::deleted, 1);
}

TEST(SharedPtr, ThreadsMayCopyAndDropOneObject) {
    SBase::deleted = 0;
    {
        const TSharedPtr<SBase> shared(new SBase);
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([own = shared] {
                for (int n = 0; n < 10000; ++n) TSharedPtr<SBase> copy(own);
            });
        }
        for (std::thread& thread : threads) thread.join();
        threads.clear();
        EXPECT_EQ(shared.RefCount(), 1);
    }
    EXPECT_EQ(SBase::deleted, 1);
}

}  // namespace
}  // namespace ovix
