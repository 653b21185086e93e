#pragma once

#include "reduce/factory/named_class_factory.h"
#include "reduce/objects/reduce_object_factory.h"

namespace ovix::reduce {

/// What every concrete class of object repeats: identity, registration and duplication. `Object` has the constants
///
///     static constexpr GUID typeID = "{...}"_guid;
///     static constexpr const wchar_t* kName = L"...";
///
/// and is copied by assignment.
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
        const Object& self = static_cast<const Object&>(*this);
        const TSharedPtr<IReduceObject> made = reduceObjectFactory()->CreateByTypeID(Object::typeID);
        const TSharedPtr<Object> copy = made.Cast<Object>();
        if (!copy) return MakeShared<Object>(self);  // the factory's class is not ours: lose nothing
        *copy = self;
        return made;
    }
};

}  // namespace ovix::reduce
