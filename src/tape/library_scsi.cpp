#include "tape/library_scsi.h"

#include <optional>
#include <string_view>
#include <utility>

#include "foundation/messages.h"
#include "platform/shared_library.h"

namespace halvern {

namespace {

class LibraryScsi final : public SequentialScsi {
public:
    explicit LibraryScsi(SharedLibrary library) : library_(std::move(library)) {}

    /// Whether every function was there.
    bool resolve() {
        return find(type_, "GetDeviceType") && find(vendor_, "GetVendorId") &&
               find(product_, "GetProductId") && find(path_, "GetScsiPath") &&
               find(ready_, "TestUnitReady") && find(load_, "Load") &&
               find(read_, "ReadVariableBlock") && find(write_, "WriteVariableBlock") &&
               find(filemarks_, "WriteFilemarks") && find(rewind_, "Rewind") &&
               find(unload_, "Unload") && find(space_, "Space") && find(sense_, "RequestSense");
    }

    int GetDeviceType(int device) override { return type_(device); }
    std::optional<std::string> GetVendorId(int device) override { return id<8>(vendor_, device); }
    std::optional<std::string> GetProductId(int device) override {
        return id<16>(product_, device);
    }
    std::uint32_t GetScsiPath(int device) override { return path_(device); }
    int TestUnitReady(int device) override { return ready_(device); }
    int Load(int device) override { return load_(device); }
    int ReadVariableBlock(int device, std::span<std::byte> buffer, int flags) override {
        return read_(device, buffer.data(), static_cast<int>(buffer.size()), flags);
    }
    int WriteVariableBlock(int device, std::span<const std::byte> block) override {
        return write_(device, block.data(), static_cast<int>(block.size()));
    }
    int WriteFilemarks(int device, int count) override { return filemarks_(device, count); }
    int Rewind(int device) override { return rewind_(device); }
    int Unload(int device, int flags) override { return unload_(device, flags); }
    int Space(int device, SpaceUnit unit, int count) override {
        return space_(device, static_cast<int>(unit), count);
    }
    int RequestSense(int device, MutableBytes<SenseData::kSize> sense) override {
        return sense_(device, reinterpret_cast<unsigned char*>(sense.data()),
                      static_cast<int>(sense.size()));
    }

private:
    template <class Function>
    bool find(Function*& function, const char* name) {
        function = library_.function<Function>(name);
        return function != nullptr;
    }

    template <std::size_t N>
    static std::optional<std::string> id(int (*read)(int, char*), int device) {
        char text[N + 1] = {};
        if (read(device, text) != tape_status::kGood) return {};
        const std::string_view whole(text, N);
        const std::string_view ended = whole.substr(0, whole.find('\0'));
        return std::string(ended.substr(0, ended.find_last_not_of(' ') + 1));
    }

    SharedLibrary library_;
    int (*type_)(int) = nullptr;
    int (*vendor_)(int, char*) = nullptr;
    int (*product_)(int, char*) = nullptr;
    unsigned (*path_)(int) = nullptr;
    int (*ready_)(int) = nullptr;
    int (*load_)(int) = nullptr;
    int (*read_)(int, void*, int, int) = nullptr;
    int (*write_)(int, const void*, int) = nullptr;
    int (*filemarks_)(int, int) = nullptr;
    int (*rewind_)(int) = nullptr;
    int (*unload_)(int, int) = nullptr;
    int (*space_)(int, int, int) = nullptr;
    int (*sense_)(int, unsigned char*, int) = nullptr;
};

}  // namespace

std::unique_ptr<SequentialScsi> load_library_scsi(const Reporter& report, const std::string& file) {
    std::optional<SharedLibrary> library = SharedLibrary::open(file);
    if (!library) {
        report.Log("Can't find SEQSCSI.DLL!\n");
        return nullptr;
    }
    auto scsi = std::make_unique<LibraryScsi>(std::move(*library));
    if (!scsi->resolve()) {
        report.Log("SEQSCSI.DLL error!\n");
        return nullptr;
    }
    return scsi;
}

}  // namespace halvern
