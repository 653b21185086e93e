#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "core/process.h"
#include "reduce/factory/named_class_factory.h"

namespace ovix {
namespace {

struct SThing {
    explicit SThing(int kind_) : kind(kind_) {}
    virtual ~SThing() = default;
    int kind;
};

int destroyed = 0;
template <int kKind>
SThing* Create() {
    return new SThing(kKind);
}
SThing* CreateNothing() { return nullptr; }
void Destroy(SThing* thing) {
    ++destroyed;
    delete thing;
}

using CFactory = TNamedClassFactory<SThing, TNamedClassFactorySharedPtrCreatePolicy<SThing>, int>;

TEST(NamedClassFactory, TheFirstOfANameKeepsItAndDestroysItsOwn) {
    CFactory factory;
    EXPECT_TRUE(factory.Register(L"One", Create<1>, Destroy, 10));
    EXPECT_TRUE(factory.Register(L"one", Create<2>, Destroy));  // another name
    EXPECT_FALSE(factory.Register(L"One", Create<3>, Destroy, 30));
    EXPECT_TRUE(factory.Register(L"None", CreateNothing, Destroy, 40));
    const std::tuple<const wchar_t*, int, int, bool> cases[] = {// kind of the object, 0 for none; the extra; is known
                                                                {L"One", 1, 10, true},  {L"one", 2, 0, true},
                                                                {L"None", 0, 40, true}, {L"ONE", 0, 0, false},
                                                                {L"On", 0, 0, false},   {L"", 0, 0, false}};
    for (const auto& [name, kind, extra, known] : cases) {
        SCOPED_TRACE(CString(name).GetUTF8());
        const auto& entry = factory.GetEntry(name);
        EXPECT_TRUE(factory.IsRegistered(name) == known && (entry.create != nullptr) == known && entry.extra == extra);
        EXPECT_STREQ(entry.name, known ? name : L"");
        destroyed = 0;
        TSharedPtr<SThing> thing = factory.Create(name), other = thing;
        EXPECT_EQ(thing ? thing->kind : 0, kind);
        EXPECT_TRUE(!thing || (!factory.Destroy(L"Two", thing) && thing));
        EXPECT_TRUE(factory.Destroy(name, thing) == known && !thing && destroyed == 0) << "somebody still holds it";
        EXPECT_TRUE(factory.Destroy(name, other) == known && destroyed == (kind != 0));
    }
}

TEST(NamedClassFactory, ListsEntriesInOrderOfRegistration) {
    CFactory factory;
    std::string expected, listed;
    for (int i = 0; i < 12; ++i) {
        const CString name = CString::FromFormat(L"n%d ", i);
        factory.Register(name, Create<1>, Destroy, i);
        expected += name.GetUTF8();
    }
    const CFactory copy(factory);
    TArray<CString> names{L"lost"};
    copy.GetNames(names);
    for (const CString& name : names) listed += name.GetUTF8();
    EXPECT_EQ(listed, expected);
    EXPECT_TRUE(copy.GetEntryCount() == 12 && copy.GetEntryAt(11).extra == 11);
    EXPECT_TRUE(copy.GetEntryAt(12).name.IsEmpty() && !copy.GetEntryAt(12).create && !copy.GetEntryAt(~0u).create);
}

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
