// The host's rotating log file. Each writeLog appends one whole line with a
// single O_APPEND write, so several loggers in several threads (or processes)
// can share one file without their lines interleaving. Rotation is serialised
// within the process only; the module logs from one process.
#pragma once

#include <string>

class VXLogger {
public:
    VXLogger();
    ~VXLogger();

    // path is a device path; missing parent directories are created.
    // maxSize: size in bytes past which the file is rotated (<= 0: never).
    // count: number of older files kept as path.1 ... path.count.
    bool init(const std::string& path, int maxSize, int count);
    // Appends tag + " " + text (+ "\n" unless text ends with one).
    // Returns the bytes written, or -1 before a successful init or on error.
    int writeLog(const std::string& tag, const std::string& text);

private:
    void rotateIfFull() const;

    std::string m_strPath; // host path
    long long m_nMaxSize = 0;
    int m_nCount = 0;
};
