#include "apps/ovix/cli/output_arguments.h"

#include <CLI/CLI.hpp>

namespace ovix::app {

void COutputArguments::Add(CLI::App& verb, const char* what) {
    const char* group = "Output";
    verb.add_option("-o,--output", file_, what)->required()->type_name("FILE")->group(group);
    verb.add_flag("--overwrite", overwrite_, "replace files that exist")->group(group);
    verb.add_flag("--json", json_, "say what was done as JSON")->group(group);
}

}  // namespace ovix::app
