#pragma once

#include "core/array.h"
#include "core/shared_ptr.h"
#include "core/string.h"

namespace ovix {

/// The one rule of creation: the shared pointer takes the result of `create` with `destroy` as its deleter.
template <class T>
struct TNamedClassFactorySharedPtrCreatePolicy {
    using Pointer = TSharedPtr<T>;
    static Pointer Make(T* (*create)(), void (*destroy)(T*)) { return Pointer(create(), destroy); }
};

/// Classes found by name at run time. Names are compared with their case; whoever registers a name first keeps it.
///
/// No lock is held: registration belongs to library loads, which the operating system serialises, and all else reads.
template <class T, class CreatePolicy, class ExtraStuff>
class TNamedClassFactory {
  public:
    using Create_t = T* (*)();
    using Destroy_t = void (*)(T*);

    struct SEntry {
        CString name;
        Create_t create = nullptr;
        Destroy_t destroy = nullptr;
        ExtraStuff extra{};
    };

    /// False, with nothing changed, when the name is taken.
    bool Register(const wchar_t* name, Create_t create, Destroy_t destroy) {
        return Register(name, create, destroy, ExtraStuff{});
    }
    bool Register(const wchar_t* name, Create_t create, Destroy_t destroy, const ExtraStuff& extra) {
        if (!allowDuplicates_ && IsRegistered(name)) return false;
        entries_.Add({name, create, destroy, extra});  // only the duplicate is reported, not a table that cannot grow
        return true;
    }

    bool IsRegistered(const wchar_t* name) const { return Find(name) != nullptr; }

    /// The first entry of that name, or the null entry: empty name, null functions.
    const SEntry& GetEntry(const wchar_t* name) const {
        const SEntry* found = Find(name);
        return found ? *found : nullEntry_;
    }
    const SEntry& GetEntryAt(u32 index) const {
        return index < entries_.size() ? entries_.ConstGetItem(index) : nullEntry_;
    }
    u32 GetEntryCount() const { return entries_.size(); }
    /// Replaces the content by all names in order of registration.
    void GetNames(TArray<CString>& names) const {
        names.Empty();
        for (const SEntry& entry : entries_) names.Add(entry.name);
    }

    /// A new object, or an empty pointer for an unknown name.
    typename CreatePolicy::Pointer Create(const wchar_t* name) const {
        const SEntry* found = Find(name);
        return found ? CreatePolicy::Make(found->create, found->destroy) : typename CreatePolicy::Pointer();
    }
    /// Drops this reference and empties the pointer; false, with the pointer left alone, for an unknown name.
    bool Destroy(const wchar_t* name, typename CreatePolicy::Pointer& object) const {
        if (!IsRegistered(name)) return false;
        object = 0;
        return true;
    }

  private:
    const SEntry* Find(const wchar_t* name) const {
        for (const SEntry& entry : entries_) {
            if (entry.name.Equals(name)) return &entry;
        }
        return nullptr;
    }

    SEntry nullEntry_;
    TArray<SEntry> entries_;
    bool allowDuplicates_ = false;
};

/// The pair of functions that most classes register with: `new` and `delete`.
template <class T, class Base>
struct TCreateAndDestroy {
    static Base* Create() { return new (std::nothrow) T; }
    static void Destroy(Base* object) { delete object; }
};

}  // namespace ovix
