#include "apps/ovix/cli/output_arguments.h"

#include <CLI/CLI.hpp>

#include "apps/ovix/fault.h"

namespace ovix::app {

void COutputArguments::Add(CLI::App& verb, const char* what) {
    const char* group = "Output";
    verb.add_option("-o,--output", file_, what)->required()->type_name("FILE")->group(group);
    verb.add_flag("--overwrite", overwrite_, "replace files that exist")->group(group);
    verb.add_flag("--json", json_, "say what was done as JSON")->group(group);
}

void COutputArguments::RequireOther(const measure::CSource& source) const {
    if (source.IsFile(file_)) throw UsageFault(file_ + " is the input");
}

}  // namespace ovix::app
