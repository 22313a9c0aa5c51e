// A tape library with two devices: a disk, and a drive that holds one block of ten bytes.
#include <cstring>

#if defined(_WIN32)
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

EXPORTED int GetDeviceType(int device) { return device == 0 ? 0 : device == 1 ? 1 : 0x1F; }
EXPORTED unsigned GetASPI32SupportInfo() { return 0x0102; }  // complete, two adapters

#if !defined(STAND_IN_IN_PART)
namespace {
bool read_before = false;
}

EXPORTED unsigned SendASPI32Command(void* request) { return *static_cast<unsigned char*>(request); }
EXPORTED int GetVendorId(int, char*) { return 0x0400; }  // cannot be read
EXPORTED int GetProductId(int, char* text) {
    std::memcpy(text, "DLT8000         ", 17);
    return 0;
}
EXPORTED unsigned GetScsiPath(int) { return 0x00020501; }
EXPORTED int TestUnitReady(int) { return 0; }
EXPORTED int Load(int) { return 0; }
EXPORTED int ReadVariableBlock(int, void* buffer, int, int) {
    if (read_before) return 0xA981;
    read_before = true;
    std::memcpy(buffer, "ten  bytes", 10);
    return 0xA982;
}
EXPORTED int WriteVariableBlock(int, const void*, int) { return 0x2700; }
EXPORTED int WriteFilemarks(int, int) { return 0; }
EXPORTED int Rewind(int) {
    read_before = false;
    return 0;
}
EXPORTED int Unload(int, int) { return 0; }
EXPORTED int Space(int, int unit, int count) { return unit == 1 && count == 3 ? 0 : 0x2400; }
EXPORTED int RequestSense(int, unsigned char* sense, int length) {
    std::memset(sense, 0, static_cast<unsigned>(length));
    sense[0] = 0xF0;
    sense[6] = 90;  // of 100 asked for
    return 0;
}
#endif
