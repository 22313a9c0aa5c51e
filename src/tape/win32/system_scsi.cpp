#include "tape/library_scsi.h"
#include "tape/tape_drives.h"

namespace halvern {

std::unique_ptr<SequentialScsi> load_system_scsi(const std::string&, const Reporter& report) {
    return load_library_scsi(report);
}

}  // namespace halvern
