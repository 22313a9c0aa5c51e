#include "picture/png.h"

#include <png.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/replace_file.h"

namespace halvern::picture {

namespace {

/// The picture with a byte a pixel, when it has no more than 256 colours.
struct Indexed {
    std::vector<std::uint8_t> colours;  // red, green, blue in turn
    std::vector<std::uint8_t> pixels;
};

bool index_colours(std::span<const Colour> pixels, Indexed& indexed) {
    std::unordered_map<std::uint32_t, std::uint8_t> known;
    indexed.pixels.reserve(pixels.size());
    for (const Colour& pixel : pixels) {
        const std::uint32_t key = std::uint32_t{pixel.red} << 16 | pixel.green << 8 | pixel.blue;
        auto found = known.find(key);
        if (found == known.end()) {
            if (known.size() == 256) return false;
            found = known.emplace(key, static_cast<std::uint8_t>(known.size())).first;
            indexed.colours.insert(indexed.colours.end(), {pixel.red, pixel.green, pixel.blue});
        }
        indexed.pixels.push_back(found->second);
    }
    return true;
}

}  // namespace

Fault png_problem() { return {}; }

Fault write_png(const std::string& path, const Canvas& canvas) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(canvas.width());
    image.height = static_cast<png_uint_32>(canvas.height());
    const std::span<const Colour> pixels = canvas.pixels();
    const bool grey =
        std::ranges::all_of(pixels, [](Colour c) { return c.red == c.green && c.green == c.blue; });
    Indexed indexed;
    std::vector<std::uint8_t> bytes;
    if (grey) {
        image.format = PNG_FORMAT_GRAY;
        for (const Colour& pixel : pixels) bytes.push_back(pixel.red);
    } else if (index_colours(pixels, indexed)) {
        image.format = PNG_FORMAT_RGB_COLORMAP;
        image.colormap_entries = static_cast<png_uint_32>(indexed.colours.size() / 3);
        bytes = std::move(indexed.pixels);
    } else {
        image.format = PNG_FORMAT_RGB;
        for (const Colour& p : pixels) bytes.insert(bytes.end(), {p.red, p.green, p.blue});
    }
    std::string encoded;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    encoded.resize(size);
    if (!png_image_write_to_memory(&image, encoded.data(), &size, 0, bytes.data(), 0,
                                   indexed.colours.data())) {
        return Fault(image.message);
    }
    encoded.resize(size);
    return replace_file(path, encoded, Reach::kSystem);
}

}  // namespace halvern::picture
