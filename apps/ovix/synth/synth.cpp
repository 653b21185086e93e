#include "apps/ovix/synth/synth.h"

#include <fmt/format.h>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/choice.h"

namespace ovix::app {

ISynthesizer::~ISynthesizer() = default;

std::span<const SSynthFamily> SynthFamilies() {
    static const SSynthFamily families[] = {
        K410SynthFamily(), LORRASynthFamily(), LORSBSynthFamily(),  OspreySynthFamily(),   LapwingSynthFamily(),
        WrenSynthFamily(), MV310SynthFamily(), PloverSynthFamily(), MVFalconSynthFamily(),
    };
    return families;
}

const SSynthFamily* FindSynthFamily(const GUID& type) {
    for (const SSynthFamily& family : SynthFamilies()) {
        for (const SSynthForm& form : family.forms()) {
            if (form.type == type) return &family;
        }
    }
    return nullptr;
}

const SSynthFamily& SynthFamilyOf(const std::string& option, const std::string& decoder) {
    std::vector<std::pair<std::string, const SSynthFamily*>> words;
    for (const SSynthFamily& family : SynthFamilies()) words.emplace_back(CString(family.filter).GetUTF8(), &family);
    return *ParseChoice<const SSynthFamily*>(option, decoder, words);
}

SSynthOptions WithForm(SSynthOptions options, std::span<const SSynthForm> forms) {
    if (options.width == 0 || options.height == 0) throw UsageFault("a frame has at least one pixel");
    std::string offered;
    for (const SSynthForm& form : forms) {
        if (form.type != options.type) continue;
        if (options.form.empty() || form.form == options.form) {
            options.form = form.form;
            return options;
        }
        offered += (offered.empty() ? "" : ", ") + form.form;
    }
    throw UsageFault(fmt::format("no \"{}\" of this pixel type can be made; there is: {}", options.form,
                                 offered.empty() ? "nothing" : offered));
}

}  // namespace ovix::app
