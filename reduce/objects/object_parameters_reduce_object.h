#pragma once

#include "reduce/objects/typed_reduce_object.h"

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

}  // namespace ovix::reduce
