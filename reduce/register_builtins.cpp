// The library's only static initialiser: registers the built-in classes in their order.
//
// The first step asks for the filter factory, whose creation loads the plug-ins. So plug-ins register before any
// built-in class, and as the first registrant of a name keeps it, a plug-in can replace a built-in one.

#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/factory_converters.h"
#include "reduce/convert/uncalibrated_converters.h"
#include "reduce/convert/user_converter.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/dunlin_reduce_objects.h"
#include "reduce/filters/families.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/osprey_filter.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/abate.h"
#include "reduce/pixels/correction_objects.h"

namespace ovix::reduce {

namespace {

constexpr bool (*kBuiltins[])() = {
    RegisterK410Filter,                       // decoder "K410"
    CAbateCfgReduceObject::Register,          // metadata object "AbateCfg"
    RegisterLORFilterRA,                      // decoder "LOR-RA"
    RegisterLORFilterSB,                      // decoder "LOR-SB"
    CCorrectionCfgReduceObject::Register,     // metadata object "CorrectionCfg"
    CCorrectionReduceObject::Register,        // metadata object "Correction"
    COspreyFilter::Register,                  // decoder "Osprey"
    COspreyFrameInfoReduceObject::Register,   // metadata object "OspreyFrameInfo"
    CFOVReduceObject::Register,               // metadata object "FOV"
    CFrameHeaderReduceObject::Register,       // metadata object "FrameHeader"
    CFrameInfoReduceObject::Register,         // metadata object "FrameInfo"
    CDunlinCameraInfoReduceObject::Register,  // metadata object "DunlinCameraInfo"
    CDunlinFactoryCalReduceObject::Register,  // metadata object "DunlinFactoryCal"
    CDunlinFrameInfoReduceObject::Register,   // metadata object "DunlinFrameInfo"
    CTernConverter::Register,                 // converter "TernConverter"
    CTernFactoryCalReduceObject::Register,    // metadata object "TernFactoryCal"
    RegisterPloverFilter,                     // decoder "Plover"
    CMerlinConverter::Register,               // converter "MerlinConverter"
    CMerlinFactoryCalReduceObject::Register,  // metadata object "MerlinFactoryCal"
    CObjectParametersReduceObject::Register,  // metadata object "ObjectParameters"
    RegisterLapwingFilter,                    // decoder "Lapwing"
    CRCalReduceObject::Register,              // metadata object "RCal"
    CRGBConverter::Register,                  // converter "RGBConverter"
    RegisterMV310Filter,                      // decoder "MV310"
    RegisterMVFalconFilter,                   // decoder "MVFalcon"
    RegisterWrenFilter,                       // decoder "Wren"
    CSourceInfoReduceObject::Register,        // metadata object "SourceInfo"
    CCurlewCameraInfoReduceObject::Register,  // metadata object "CurlewCameraInfo"
    CCurlewConverter::Register,               // converter "CurlewConverter"
    CCurlewFactoryCalReduceObject::Register,  // metadata object "CurlewFactoryCal"
    CTemperatureConverter::Register,          // converter "TemperatureConverter"
    CUserConverter::Register,                 // converter "UserConverter"
};

/// A result of false says that a plug-in was first; nobody needs it.
[[maybe_unused]] const bool kRegistered = [] {
    filterFactory();
    for (const auto registerClass : kBuiltins) registerClass();
    return true;
}();

}  // namespace

}  // namespace ovix::reduce
