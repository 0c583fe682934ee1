// The one way files are read: by the module, by its host stand-ins and by
// sensorctl. A file that is not a regular file (a FIFO, a device such as
// /dev/zero, a directory, a socket) is refused without blocking and without
// reading a byte; a regular file is read up to a cap (platform/InputLimits.h)
// and never further, so a huge or growing file costs no more than the cap.
#pragma once

#include <cstddef>
#include <string>

enum class ReadStatus {
    Ok,
    Missing,    // no such file, or a path that cannot lead to one
    Directory,  // a directory where a file was expected
    Special,    // a FIFO, device or socket
    TooLarge,   // longer than the cap (only when the cap refuses)
    Unreadable, // permissions or an I/O error
};

// What to do with a regular file longer than the cap.
enum class Oversize {
    Refuse,     // nothing is taken: a cut text or record list would pass for whole
    TakePrefix, // the first cap bytes are taken (a marker read line by line)
};

// Opens a host path for reading without blocking (a FIFO without a writer
// would hang a blocking open) and keeps the descriptor only for a regular
// file. Returns the descriptor (close-on-exec) and its size in *p_pSize when
// given, or -1 with the reason in p_eStatus.
int openRegularFile(const std::string& p_strHostPath, ReadStatus& p_eStatus,
                    std::size_t* p_pSize = nullptr);

// Reads at most p_nCap bytes of a regular file into p_strOut (cleared first).
ReadStatus readHostFile(const std::string& p_strHostPath, std::size_t p_nCap, std::string& p_strOut,
                        Oversize p_eOversize = Oversize::Refuse);
// The same for a device path (resolved through the device root).
ReadStatus readDeviceFile(const std::string& p_strDevicePath, std::size_t p_nCap,
                          std::string& p_strOut, Oversize p_eOversize = Oversize::Refuse);

// The reason as the reports print it, e.g. "not a regular file (FIFO, device
// or socket)" or "larger than 65536 bytes".
std::string describeRead(ReadStatus p_eStatus, std::size_t p_nCap);

// Why a path cannot be opened for reading, found without opening it ("" when
// it looks readable); for reports after an open failed.
std::string describeUnopenableHost(const std::string& p_strHostPath);
std::string describeUnopenable(const std::string& p_strDevicePath);
