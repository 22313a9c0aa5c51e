#include "picture/png.h"

#include <gtest/gtest.h>
#include <png.h>

#include <filesystem>

#include "support/temporary_folder.h"

namespace halvern::picture {
namespace {

/// What the PNG library reads from a file.
std::vector<Colour> read_back(const std::string& path, png_uint_32& width) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return {};
    image.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    width = image.width;
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr)) << image.message;
    std::vector<Colour> pixels;
    for (std::size_t i = 0; i + 2 < bytes.size(); i += 3) {
        pixels.push_back({bytes[i], bytes[i + 1], bytes[i + 2]});
    }
    return pixels;
}

// As grey, with a table of colours, and with more colours than a table holds.
TEST(Png, EveryKindOfPictureComesBack) {
    const testing_support::TemporaryFolder folder;
    for (const int kind : {0, 1, 2}) {
        Canvas canvas(37, 23);
        for (int y = 0; y < 23; ++y) {
            for (int x = 0; x < 37; ++x) {
                const auto a = static_cast<std::uint8_t>(x * 6),
                           b = static_cast<std::uint8_t>(y * 9);
                canvas.set(x, y,
                           kind == 0   ? Colour{a, a, a}
                           : kind == 1 ? Colour{a, 17, 200}
                                       : Colour{a, b, 90});
            }
        }
        ASSERT_FALSE(write_png(folder.file("p.png"), canvas));
        png_uint_32 width = 0;
        const std::vector<Colour> pixels = read_back(folder.file("p.png"), width);
        EXPECT_EQ(width, 37u);
        EXPECT_EQ(pixels, std::vector<Colour>(canvas.pixels().begin(), canvas.pixels().end()));
    }
}

TEST(Png, LeavesWhatItCannotReplace) {
    const testing_support::TemporaryFolder folder;
    EXPECT_TRUE(write_png(folder.file("no/place.png"), Canvas(2, 2)).is_missing());
    EXPECT_TRUE(write_png("/dev/null", Canvas(2, 2)));
    EXPECT_FALSE(std::filesystem::is_regular_file("/dev/null"));
}

}  // namespace
}  // namespace halvern::picture
