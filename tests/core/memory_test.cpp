#include "core/array.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/shared_ptr.h"

namespace ovix {
namespace {

std::string TextOf(const TArray<CString>& array) {
    std::string text;
    for (const CString& element : array) text += element.IsEmpty() ? "_" : element.GetUTF8();
    return text;
}

TEST(Array, RearrangesElements) {
    const std::tuple<const char*, std::function<bool(TArray<CString>&)>, const char*> cases[] = {
        {"add", [](auto& a) { return a.Add(L"x"); }, "abcdex"},
        {"add an element of its own while growing",
         [](auto& a) { return a.SetSize(a.capacity()) && a.Add(a.ConstGetItem(1)); }, "abcde_____b"},
        {"insert in front", [](auto& a) { return a.Insert(L"x", 0); }, "xabcde"},
        {"insert past the end", [](auto& a) { return a.Insert(L"x", 7); }, "abcde__x"},
        {"insert several of its own", [](auto& a) { return a.Insert(a.ConstGetItem(4), 1, 6); }, "aeeeeeebcde"},
        {"insert none past the end", [](auto& a) { return a.Insert(L"x", 6, 0); }, "abcde_"},
        {"insert a new element", [](auto& a) { return a.Insert(2); }, "ab_cde"},
        {"insert beyond all counts", [](auto& a) { return !a.Insert(L"x", ~u32{0}); }, "abcde"},
        {"remove", [](auto& a) { return a.Remove(1); }, "acde"},
        {"remove more than there is", [](auto& a) { return a.Remove(3, ~u32{0}); }, "abc"},
        {"replace", [](auto& a) { return a.Replace(L"x", 4); }, "abcdx"},
        {"replace past the end", [](auto& a) { return a.Replace(L"x", 6); }, "abcde_x"},
        {"replace by an own element while growing", [](auto& a) { return a.Replace(a.ConstGetItem(0), 10); },
         "abcde_____a"},
        {"replace beyond all counts", [](auto& a) { return !a.Replace(L"x", ~u32{0}); }, "abcde"},
        {"swap", [](auto& a) { return a.Swap(0, 4); }, "ebcda"},
        {"swap past the end", [](auto& a) { return a.Swap(6, 0); }, "_bcde_a"},
        {"move up", [](auto& a) { return a.Move(1, 3); }, "acdbe"},
        {"move down", [](auto& a) { return a.Move(4, 0); }, "eabcd"},
        {"move past the end", [](auto& a) { return a.Move(0, 6); }, "bcde__a"},
        {"shrink", [](auto& a) { return a.SetSize(2); }, "ab"},
        {"grow", [](auto& a) { return a.SetSize(7); }, "abcde__"},
        {"add implicitly what is there", [](auto& a) { return a.ImplicitAddition(3); }, "abcde"},
        {"empty", [](auto& a) { return (a.clear(), a.capacity() == 10); }, ""},
        {"destroy", [](auto& a) { return (a.Destroy(), a.capacity() == 0 && !a.data()); }, ""},
        {"copy itself", [](auto& a) { return a.Copy(a); }, "abcde"}};
    for (const auto& [what, change, expected] : cases) {
        TArray<CString> array{L"a", L"b", L"c", L"d", L"e"};
        EXPECT_TRUE(change(array)) << what;
        EXPECT_EQ(TextOf(array), expected) << what;
    }
}

TEST(Array, GrowsBeyondTheWantedCountOrDoubles) {
    const std::tuple<u16, std::vector<u32>, u32> cases[] = {
        {5, {1}, 5},       {5, {4}, 5},         {5, {5}, 10},    {5, {5, 10}, 10}, {5, {5, 11}, 15},     {5, {0}, 0},
        {100, {100}, 200}, {65534, {1}, 65534}, {65535, {1}, 1}, {65535, {5}, 8},  {65535, {3, 4, 5}, 8}};
    for (const auto& [rate, wanted, capacity] : cases) {
        TArray<u8> array;
        EXPECT_EQ(array.SetGrowthRate(rate), 5);
        for (const u32 n : wanted) EXPECT_TRUE(array.Dimension(n));
        EXPECT_EQ(array.GetCapacity(), capacity) << rate << " " << wanted.back();
        EXPECT_EQ(array.size(), 0u);
    }
}

TEST(Array, ReadingTestsTheIndexWhereItCannotGrow) {
    TArray<int> array{1, 2};
    const TArray<int>& constant = array;
    for (const u32 index : {2u, ~u32{0}}) {
        try {
            static_cast<void>(constant[index]);
            ADD_FAILURE() << index;
        } catch (const std::exception& error) {
            EXPECT_STREQ(error.what(), "Index out of bounds.");
        }
    }
    EXPECT_TRUE(array[2] == 0 && array.size() == 3);
    EXPECT_THROW(array[~u32{0}], std::bad_alloc);
    struct SHuge {
        u8 bytes[std::size_t{1} << 40];
    };
    TArray<SHuge> huge;
    EXPECT_TRUE(!huge.Dimension(~u32{0} - 10) && huge.capacity() == 0 && !huge.data());
}

TEST(Array, CopiesAreIndependentAndMemoryChangesHands) {
    TArray<CString> first{L"a", L"b"}, second(first);
    second[0] = L"x";
    EXPECT_EQ(TextOf(first), "ab");
    first = std::move(second);
    const u32 count = first.size();
    CString* elements = first.Detach();
    EXPECT_EQ(first.size(), 0u);
    second.Attach(elements, count);
    EXPECT_EQ(TextOf(second), "xb");
    EXPECT_EQ(TextOf(TArray<CString>::MakeArray(2, L"p", L"q", L"r")), "pq");
}

TEST(Array, SortsWithAndWithoutContext) {
    TArray<int> array{3, -1, 2};
    array.Sort([](const int* a, const int* b) { return *a - *b; });
    EXPECT_EQ(std::vector<int>(array.begin(), array.end()), (std::vector{-1, 2, 3}));
    int pivot = 2;
    const auto nearer = [](void* context, const int* a, const int* b) {
        const int to = *static_cast<int*>(context);
        return std::abs(*a - to) - std::abs(*b - to);
    };
    array.Sort(nearer, &pivot);
    EXPECT_EQ(std::vector<int>(array.begin(), array.end()), (std::vector{2, 3, -1}));
}

struct SBase {
    virtual ~SBase() { ++deleted; }
    static inline int deleted = 0;
};
struct SDerived : SBase {};
struct SOther : SBase {};

int called = 0;
void CountAndDelete(SBase* object) {
    ++called;
    delete object;
}

static_assert(std::is_convertible_v<TSharedPtr<SBase>, bool> && !std::is_convertible_v<TSharedPtr<SBase>, int>);

TEST(SharedPtr, DisposesByItsDeleter) {
    SBase resident;
    const std::tuple<const char*, SBase*, TSharedPtr<SBase>::Deleter, int, int> cases[] = {
        {"the virtual destructor", new SDerived, nullptr, 1, 0},
        {"a function", new SDerived, CountAndDelete, 1, 1},
        {"nothing for an object that lives elsewhere", &resident, TSharedPtr<SBase>::DoNotDelete(), 0, 0},
        {"nothing for no object", nullptr, CountAndDelete, 0, 0}};
    for (const auto& [what, object, deleter, deletions, calls] : cases) {
        SCOPED_TRACE(what);
        SBase::deleted = called = 0;
        {
            TSharedPtr<SBase> first(object, deleter);
            EXPECT_EQ(first.RefCount(), object ? 1 : 0);
            TSharedPtr<SBase> second(first), third;
            third = second;
            EXPECT_EQ(first.RefCount(), object ? 3 : 0);
            EXPECT_FALSE(first.Cast<SOther>());
            EXPECT_TRUE(TSharedPtr<SBase>(first.Cast<SDerived>()) == (object == &resident ? nullptr : object));
            first = 0;
            const TSharedPtr<SBase>& itself = third;
            third = itself;
            EXPECT_TRUE(third == object && third.RefCount() == (object ? 2 : 0) && SBase::deleted == 0);
        }
        EXPECT_TRUE(SBase::deleted == deletions && called == calls);
    }
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
    const TSharedPtr<SBase> shared(new SBase);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([own = shared] {
                for (int n = 0; n < 10000; ++n) TSharedPtr<SBase> copy(own);
            });
        }
    }
    EXPECT_EQ(shared.RefCount(), 1);
}

}  // namespace
}  // namespace ovix
