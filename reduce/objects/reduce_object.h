#pragma once

#include "core/file.h"
#include "core/guid.h"
#include "core/shared_ptr.h"
#include "reduce/api.h"
#include "reduce/factory/named_class_factory.h"
#include "reduce/factory/plugin_scan.h"

namespace ovix::reduce {

/// The bits of the mask that `Load`, `Save`, `ShouldPersist` and `CalcCRC` are given. Others have no meaning.
enum EPersistFlags : u32 {
    PersistWithoutTables = 8,  ///< the file functions leave out the blocks of correction and user calibration
    PersistInitialState = 16,  ///< the initial state of a recording: the leading flag of a record is written as 1
};

/// Type ids of the classes with bulky tables, which the file layer knows by these alone: it rests on no class of
/// theirs.
inline constexpr GUID CorrectionTypeID = "{4AD3EFCE-D157-4203-BFC2-3979EE047FE4}"_guid;
inline constexpr GUID UserCalibrationTypeID = "{E5D7371A-BD64-448F-8240-6FDFA6FC0110}"_guid;

/// Metadata of a source: one small typed object, tied to the whole source, to a preset or to a frame.
///
/// The fields are open to decoders, converters and the file layer. An object has no lock of its own: whoever shares one
/// between threads goes by the lock of its `CReduceObjectArray`.
class OVIX_REDUCE_API IReduceObject {
  public:
    static constexpr u64 NoFrame = ~u64{0};
    static constexpr u8 NoPreset = 255;

    bool valid = false;  ///< the object holds real data
    u64 frameNumber = NoFrame;
    u8 preset = NoPreset;
    u32 version = 0x10000;  ///< of the stored form, major number in the upper 16 bits
    bool persist = true;    ///< whether the object goes to the info file

    IReduceObject();
    IReduceObject(const IReduceObject&);
    IReduceObject& operator=(const IReduceObject&);
    virtual ~IReduceObject();

    virtual GUID GetTypeID() const = 0;
    virtual const wchar_t* GetName() const = 0;
    virtual bool IsCalObj() const;
    /// An independent copy, made through the factory so that a class replaced by a plug-in stays replaced.
    virtual TSharedPtr<IReduceObject> Duplicate() const = 0;
    /// The state of a fresh object; as a rule `frameNumber`, `preset`, `persist` and `version` stay.
    virtual void Default();
    /// Reads the stored form of the version that stood in the block header. After a false result the object may have
    /// changed and is not to be used.
    virtual bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags);
    /// Writes the newest stored form.
    virtual bool Save(TSharedPtr<IFile> file, u32 flags);
    virtual bool ShouldPersist(u32 flags) const;
    /// CRC-32 and number of the bytes that `Save` with these flags writes; both stay as they were when it fails.
    virtual bool CalcCRC(u32& crc, u64& size, u32 flags);

    bool IsPerFrame() const { return frameNumber != NoFrame; }
    bool IsPerPreset() const { return preset < NoPreset; }
};

struct SReduceObjectFactoryExtraStuff {
    SReduceObjectFactoryExtraStuff() = default;
    explicit SReduceObjectFactoryExtraStuff(const GUID& id) : typeID(id) {}

    GUID typeID;
};

/// Makes reduce objects from a name or a type id. Unknown ones give empty pointers, zero GUIDs or empty names.
class OVIX_REDUCE_API CReduceObjectFactory
    : public TNamedClassFactory<IReduceObject, TNamedClassFactorySharedPtrCreatePolicy<IReduceObject>,
                                SReduceObjectFactoryExtraStuff> {
  public:
    TSharedPtr<IReduceObject> CreateByName(const wchar_t* name) const { return Create(name); }
    TSharedPtr<IReduceObject> CreateByTypeID(const GUID& id) const;
    GUID GetTypeIDFromName(const wchar_t* name) const { return GetEntry(name).extra.typeID; }
    CString GetNameFromTypeID(const GUID& id) const;
    /// As that of the template, with a line to the debugger output on what became of it: the only lines that this
    /// library ever logs.
    bool Register(const wchar_t* name, const GUID& id, Create_t create, Destroy_t destroy);
};

using ReduceObjectFactoryHolder = TFactoryHolder<CReduceObjectFactory>;
OVIX_REDUCE_API CReduceObjectFactory* reduceObjectFactory();

}  // namespace ovix::reduce

extern template class OVIX_REDUCE_API ovix::TSingletonPtr<ovix::reduce::CReduceObjectFactory, 100000, 0,
                                                          ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

extern OVIX_REDUCE_API const ReduceObjectFactoryHolder ReduceObjectFactory;

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
