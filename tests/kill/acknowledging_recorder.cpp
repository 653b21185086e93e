// acknowledging_recorder DUMP RECORDING FRAME-SIZE EVERY: records the frames of a dump of 64 x 48 pixels and says of
// each that it was acknowledged; of so many at once that they were flushed, unless EVERY is 0.

#include <ovix.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int, char** arguments) {
    ovix_options options{};
    options.size = sizeof options;
    options.pixel_type = "K410 IR (GigE)";
    options.width = 64;
    options.height = 48;
    const int every = std::atoi(arguments[4]);
    ovix_recorder* recorder = nullptr;
    std::FILE* dump = std::fopen(arguments[1], "rb");
    std::vector<char> frame(static_cast<std::size_t>(std::atoi(arguments[3])));
    if (!dump || ovix_record(arguments[2], &options, OVIX_KEEP_PART, &recorder)) return 1;
    for (int n = 1; std::fread(frame.data(), 1, frame.size(), dump) == frame.size(); ++n) {
        if (ovix_record_frame(recorder, frame.data(), frame.size())) return 1;
        if (every && n % every) continue;
        if (every && ovix_record_flush(recorder)) return 1;
        const std::string line = std::to_string(n) + "\n";
        if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) return 1;
    }
    const int result = ovix_record_finish(recorder);
    ovix_close_recorder(recorder);
    std::fclose(dump);
    return result;
}
