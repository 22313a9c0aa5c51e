// Records of any bytes in every encoding, with counts that need not fit: decoded, and encoded into
// every target. The loops chosen for this processor must agree with the plain ones.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "foundation/messages.h"
#include "trace/codec_kernels.h"
#include "trace/samples.h"

void halvern::TerminateJob(int) { std::abort(); }

namespace {

/// A definition whose only word is WEIGHT.
halvern::TraceHeaderDefinition weight_alone() {
    const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                       ("halvern-fuzz-" + std::to_string(std::random_device{}()));
    std::ofstream(path) << std::string(51, ' ') << "WEIGHT   168 0\n";
    halvern::TraceHeaderDefinition definition;
    if (definition.load(path.string()) != 0) std::abort();
    std::filesystem::remove(path);
    return definition;
}

void compare_kernels(std::span<const std::byte> raw) {
    const halvern::CodecKernels& plain = halvern::plain_codec_kernels();
    const halvern::CodecKernels& best = halvern::codec_kernels();
    const std::size_t count = raw.size() / 4;
    std::vector<float> samples(count), other(count);
    plain.decode_ibm(raw.data(), samples.data(), count);
    best.decode_ibm(raw.data(), other.data(), count);
    if (count && std::memcmp(samples.data(), other.data(), 4 * count)) __builtin_trap();

    if (count) std::memcpy(samples.data(), raw.data(), 4 * count);
    std::vector<std::byte> encoded(4 * count), again(4 * count);
    plain.encode_ibm(samples.data(), encoded.data(), count);
    best.encode_ibm(samples.data(), again.data(), count);
    if (encoded != again) __builtin_trap();
    plain.encode_int16(samples.data(), 0x1p-9f, 1, encoded.data(), count);
    best.encode_int16(samples.data(), 0x1p-9f, 1, again.data(), count);
    if (encoded != again) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static halvern::TraceHeaderDefinition definition = weight_alone();
    if (size < 8) return 0;
    std::array<std::byte, halvern::kTraceHeaderBytes> image{};
    definition.attach(image.data());
    definition.set_double(0, data[0] * 256 + data[1]);
    const auto format = static_cast<halvern::SampleFormat>(data[2] % 6);
    const int stored = (data[3] - 16) * 4;
    const int nominal = (data[4] - 16) * 4;
    const int count = (data[5] - 16) * 4;
    const auto raw = std::as_bytes(std::span(data + 8, size - 8));
    compare_kernels(raw);

    halvern::TraceSamples samples;
    samples.set_descale(data[6] / 16.0);
    for (const auto target : {halvern::SampleFormat::kIeee, halvern::SampleFormat::kIbm,
                              halvern::SampleFormat::kInt16}) {
        samples.set_raw(raw, stored, nominal, 0, format);
        std::vector<std::byte> out(static_cast<std::size_t>(std::max(count, 0)) * 4);
        samples.to_format(definition, target, out, count);
        if (samples.floats(definition).size() !=
            static_cast<std::size_t>(samples.nominal_count())) {
            __builtin_trap();
        }
        samples.set_floats(samples.floats(definition));
        samples.to_format(definition, target, out, count);
    }
    return 0;
}
