#include "reduce/factory/named_class_factory.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(NamedClassFactory, TheFirstOfANameKeepsIt) {
    CFactory factory;
    EXPECT_TRUE(factory.Register(L"One", Create<1>, Destroy, 10));
    EXPECT_TRUE(factory.Register(L"one", Create<2>, Destroy));  // another name
    EXPECT_FALSE(factory.Register(L"One", Create<3>, Destroy, 30));
    EXPECT_TRUE(factory.Register(L"None", CreateNothing, Destroy, 40));

    const struct {
        const wchar_t* name;
        int kind;  ///< 0: no object comes
        int extra;
        bool known;
    } cases[] = {
        {L"One", 1, 10, true}, {L"one", 2, 0, true}, {L"None", 0, 40, true},
        {L"ONE", 0, 0, false}, {L"On", 0, 0, false}, {L"", 0, 0, false},
    };
    for (const auto& c : cases) {
        const std::string name = CString(c.name).GetUTF8();
        EXPECT_EQ(factory.IsRegistered(c.name), c.known) << name;
        EXPECT_EQ(factory.GetEntry(c.name).extra, c.extra) << name;
        EXPECT_STREQ(factory.GetEntry(c.name).name, c.known ? c.name : L"");
        EXPECT_EQ(factory.GetEntry(c.name).create != nullptr, c.known) << name;

        destroyed = 0;
        TSharedPtr<SThing> thing = factory.Create(c.name);
        EXPECT_EQ(thing ? thing->kind : 0, c.kind) << name;
        EXPECT_EQ(thing.RefCount(), c.kind ? 1 : 0) << name;
        const TSharedPtr<SThing> other = thing;
        EXPECT_EQ(factory.Destroy(c.name, thing), c.known) << name;
        EXPECT_FALSE(thing) << name;
        EXPECT_EQ(destroyed, 0) << name << ": somebody still holds it";
    }
    EXPECT_EQ(destroyed, 0) << "the last case made none";
}

TEST(NamedClassFactory, DestroysByTheEntrysFunctionAndOnlyKnownNames) {
    CFactory factory;
    factory.Register(L"One", Create<1>, Destroy);
    destroyed = 0;
    TSharedPtr<SThing> thing = factory.Create(L"One");
    EXPECT_FALSE(factory.Destroy(L"Two", thing));
    EXPECT_TRUE(thing);
    EXPECT_TRUE(factory.Destroy(L"One", thing));
    EXPECT_EQ(destroyed, 1);
}

TEST(NamedClassFactory, ListsEntriesInOrderOfRegistration) {
    CFactory factory;
    std::string expected;
    for (int i = 0; i < 12; ++i) {
        const CString name = CString::FromFormat(L"n%d ", i);
        factory.Register(name, Create<1>, Destroy, i);
        expected += name.GetUTF8();
    }
    const CFactory copy(factory);
    TArray<CString> names{L"lost"};
    copy.GetNames(names);
    std::string listed;
    for (const CString& name : names) listed += name.GetUTF8();
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(copy.GetEntryCount(), 12u);
    EXPECT_EQ(copy.GetEntryAt(11).extra, 11);
    EXPECT_TRUE(copy.GetEntryAt(12).name.IsEmpty() && !copy.GetEntryAt(12).create && copy.GetEntryAt(12).extra == 0);
    EXPECT_EQ(copy.GetEntryAt(~0u).create, nullptr);
}

}  // namespace
}  // namespace ovix
