#pragma once

#include <span>

#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

/// What a radiometric model must know about the scene besides the camera. One object serves the whole source.
class OVIX_REDUCE_API CObjectParametersReduceObject : public TReduceObject<CObjectParametersReduceObject> {
  public:
    static constexpr GUID typeID = "{616033EC-ED49-485A-B1FE-4F563DC20F52}"_guid;
    static constexpr const wchar_t* kName = L"ObjectParameters";

    bool fromSource = false;                ///< the values are those recorded with the source
    float emissivity = 1.0f;                ///< of the target, 0 to 1
    float distance = 2.0f;                  ///< to the target
    float reflectedTemp = 293.15f;          ///< kelvin
    float atmosphereTemp = 293.15f;         ///< kelvin
    float extOpticsTemp = 293.15f;          ///< external optics, kelvin
    float extOpticsTrans = 1.0f;            ///< transmission of the external optics
    float atmosphereTrans = 0.0f;           ///< transmission of the atmosphere; 0 asks the model to compute it
    float estimatedAtmosphereTrans = 1.0f;  ///< the transmission that the converter used, written back by it
    float relativeHumidity = 0.3f;          ///< as a fraction
    u32 parameterMask = 255;                ///< kept for applications

    CObjectParametersReduceObject();

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

    /// Whether a model would compute the same from both: the eight values that go into one, each to within 1e-8. The
    /// estimate is none of them, as a converter writes it back.
    bool Equals(const CObjectParametersReduceObject* other) const;
    /// Everything but `version`.
    void CopyTo(CObjectParametersReduceObject* other) const { other->CopyFrom(*this); }
};

/// One of the eight values that a model takes from the scene: all that programs need to ask for it, to show it and to
/// hold it within sense. The library itself takes every number.
struct SObjectParameter {
    const char* key;   ///< "reflected-temp", as an option or in a file
    const char* name;  ///< in words: "reflected temperature"
    const char* unit;  ///< "K", "m", or "" of a fraction
    float CObjectParametersReduceObject::*member;
    float lowest;  ///< a model gives sense within these, both inclusive
    float highest;
    u32 recordOffset;  ///< in the stored record

    float Default() const { return CObjectParametersReduceObject().*member; }
};

/// In the order of the stored record.
OVIX_REDUCE_API std::span<const SObjectParameter> ObjectParameters();

/// The angular size of a detector element. One object serves the whole source; a decoder that knows the values sets
/// `valid`.
class OVIX_REDUCE_API CFOVReduceObject : public TReduceObject<CFOVReduceObject> {
  public:
    static constexpr GUID typeID = "{42FD8DA7-B376-45C2-8255-B9267E512077}"_guid;
    static constexpr const wchar_t* kName = L"FOV";

    double IHFOV = 0;  ///< instantaneous horizontal field of view
    double IVFOV = 0;  ///< instantaneous vertical field of view

    CFOVReduceObject();

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
