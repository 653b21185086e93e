#include <ovix.h>

#include <cstdlib>
#include <cstring>
#include <memory>

/// The C interface: of an input the first bytes are options as any program may fill them, the rest is a frame that is
/// pushed, cut and whole.
namespace {

constexpr const char* kTypes[] = {"counts", "counts-be", "K410 IR (GigE)", "RGB24", "no such type", nullptr};

void Require(bool holds) {
    if (!holds) std::abort();
}

void Push(ovix_source* source, const std::uint8_t* bytes, std::size_t size) {
    const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[size]);
    std::memcpy(exact.get(), bytes, size);
    ovix_frame frame{};
    frame.size = sizeof frame;
    const int result = ovix_push(source, exact.get(), size, &frame);
    Require((result == OVIX_OK) == (frame.values != nullptr));
    if (result) {
        ovix_error error{};
        error.size = sizeof error;
        Require(ovix_last_error(&error) == OVIX_OK && error.id == result && *error.line);
        return;
    }
    ovix_statistics figures{};
    figures.size = sizeof figures;
    Require(ovix_measure_region(source, 0, 0, 0, 0, &figures) == OVIX_OK);
    Require(figures.pixels == unsigned{frame.width} * frame.height && figures.count <= figures.pixels);
    ovix_parameter parameter{};
    parameter.size = sizeof parameter;
    for (std::size_t i = 0; ovix_parameter_at(source, i, &parameter) == OVIX_OK; ++i) Require(*parameter.key);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 16;
    if (size < kHead) return -1;
    ovix_options options{};
    options.size = sizeof options;
    options.pixel_type = kTypes[data[0] % std::size(kTypes)];
    options.width = data[1] % 20;
    options.height = data[2] % 20;
    options.flags = data[3];
    const auto choice = [&](std::size_t i) { return data[i] < 128 ? int{data[i]} : int{data[i]} - 256; };
    // Most in counts: the tables of a temperature take as long as a thousand frames.
    options.quantity = data[2] < 250 ? int{OVIX_COUNTS} : choice(4);
    options.calibration = choice(5);
    options.scale = choice(6);
    options.scene_given = data[7];
    for (float& value : options.scene) std::memcpy(&value, data + 8 + (&value - options.scene) / 2, sizeof value);
    ovix_source* source = nullptr;
    if (ovix_open_stream(&options, &source) == OVIX_OK) {
        Push(source, data + kHead, size - kHead);
        Push(source, data + kHead, (size - kHead) / 2);
    } else {
        Require(!source);
    }
    ovix_close(source);
    return 0;
}
