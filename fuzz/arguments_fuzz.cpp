#include <string>
#include <vector>

#include "apps/ovix/app_error.h"
#include "apps/ovix/command_line.h"

/// Lines as the arguments of the tool, which are taken apart and not run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto parse = ovix::app::MakeCommandLineParser();
    std::vector<std::string> arguments(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == '\n')
            arguments.emplace_back();
        else if (data[i])
            arguments.back() += static_cast<char>(data[i]);
    }
    try {
        parse(arguments);
    } catch (const ovix::app::CAppError& error) {
        if (!*error.what()) std::abort();
    }
    return 0;
}
