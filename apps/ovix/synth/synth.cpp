#include "apps/ovix/synth/synth.h"

#include "apps/ovix/synth/k410_synth.h"

namespace ovix::app {

ISynthesizer::~ISynthesizer() = default;

std::span<const SSynthFamily> SynthFamilies() {
    static const SSynthFamily families[] = {
        K410SynthFamily(),
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

}  // namespace ovix::app
