// What a customer's program does with the installed library: values, objects, decoders.

#include <cstdio>

#include "core/core.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/source_info_reduce_object.h"

int main() {
    using namespace ovix;
    using namespace ovix::reduce;

    CReduceObjectArray objects;
    const TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(true);
    if (!source || source->presetCount != 4) return 1;

    float temperature = 100;
    const STypedData data{&temperature, Flt32};
    if (!CMath::ConvertTemperature(data, data, 1, Celsius, Fahrenheit) || temperature != 212) return 2;

    try {
        static_cast<void>(static_cast<const TArray<CString>&>(TArray<CString>())[0]);
        return 3;
    } catch (const CException& error) {
        std::printf("raised %s\n", error.GetMessage().GetUTF8());
    }

    TArray<CString> names;
    filterFactory()->GetNames(names);
    for (const CString& name : names) std::printf("decoder %s\n", name.GetUTF8());
    return 0;
}
