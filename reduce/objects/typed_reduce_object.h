#pragma once

#include "reduce/factory/named_class_factory.h"
#include "reduce/objects/reduce_object_factory.h"

namespace ovix::reduce {

/// What every concrete class of object repeats: identity, registration, duplication and reset. `Object` has the
/// constants
///
///     static constexpr GUID typeID = "{...}"_guid;
///     static constexpr const wchar_t* kName = L"...";
///
/// gives its fields their defaults in its declaration or its default constructor, and is copied by assignment.
template <class Object>
class TReduceObject : public IReduceObject {
  public:
    static GUID classTypeID() { return Object::typeID; }
    static bool Register() {
        using Functions = TCreateAndDestroy<Object, IReduceObject>;
        return reduceObjectFactory()->Register(Object::kName, Object::typeID, Functions::Create, Functions::Destroy);
    }

    GUID GetTypeID() const override { return Object::typeID; }
    const wchar_t* GetName() const override { return Object::kName; }
    TSharedPtr<IReduceObject> Duplicate() const override {
        TSharedPtr<IReduceObject> made = reduceObjectFactory()->CreateByTypeID(Object::typeID);
        TSharedPtr<Object> copy = made.Cast<Object>();
        if (!copy) made = copy = MakeShared<Object>();  // a plug-in's class has the name: lose nothing
        copy->CopyFrom(Self());
        return made;
    }
    /// Everything as in a fresh object, but for the object's place in the source, `persist` and `version`.
    void Default() override {
        Object fresh;
        fresh.frameNumber = frameNumber;
        fresh.preset = preset;
        fresh.persist = persist;
        fresh.version = version;
        static_cast<Object&>(*this) = std::move(fresh);
    }

  protected:
    /// Everything but `version`, which belongs to the class.
    void CopyFrom(const Object& other) {
        const u32 ownVersion = version;
        static_cast<Object&>(*this) = other;
        version = ownVersion;
    }

  private:
    const Object& Self() const { return static_cast<const Object&>(*this); }
};

}  // namespace ovix::reduce
