// The host's file class. Names are device paths, resolved through DeviceRoot.
//
// A write-truncate open never touches the target until close(): the bytes go to
// a temporary file beside it, which close() (or destruction) flushes, syncs and
// renames over the target. A reader therefore sees the old content or the new,
// never a mix or a truncated file, whatever happens to the writer in between.
// A write that comes back short, or a stream in error, makes close() refuse
// the commit: the target then keeps its old content and no temporary is left.
#pragma once

#include "common/SensorTypes.h"

#include <cstdio>
#include <string>
#include <vector>

class VXFile {
public:
    enum : unsigned char { modeRead = 1, modeWrite = 2, modeTruncate = 64 };

    VXFile();
    ~VXFile();
    VXFile(const VXFile&) = delete;
    VXFile& operator=(const VXFile&) = delete;

    // Opens for reading (modeRead) or for replacing the whole file
    // (modeWrite | modeTruncate, missing parent directories are created).
    // Any other mode is refused. A file already open is closed first.
    bool open(const char* name, unsigned char mode = modeRead);
    int read(char* buf, unsigned int n);        // bytes read, -1 if not open for reading
    int write(const char* buf, unsigned int n); // bytes written, -1 if not open for writing
    // Closes; for a write-truncate open, commits the new content. False when
    // nothing was open or the commit failed (the target then keeps its old content).
    bool close();
    // Reading: the file's size. Writing: the bytes written so far. 0 when not open.
    INT64 getLength() const;
    FILE* getFileHandle();
    // Next line of handle without "\n" / "\r\n"; "" at end of file.
    std::string ReadOneLine(FILE* handle);
    // All remaining lines of this file, stripped the same way.
    std::vector<std::string> ReadLines();
    // Abandons a write-truncate open: the target keeps its old content. Used
    // after a short write, so a full disk never replaces a good file.
    void discard();

    // Removes the temporary files that write-truncate opens of name left
    // behind when their writer died before close (a power cut, a kill).
    // Temporaries of a writer still at work are kept. The number removed.
    static int removeLeftovers(const char* name);
    // Test hook standing for a filling flash: write-truncate opens of this
    // process may write p_nBytes more bytes in all, then every write comes
    // back short. Negative: no limit (the default).
    static void setWriteBudget(INT64 p_nBytes);
    // Test hook standing for read-only flash: write-truncate opens fail.
    static void setReadOnly(bool p_bReadOnly);

private:
    bool openForRead(const std::string& hostPath);
    bool openForReplace(const std::string& hostPath);
    bool commit();

    FILE* m_pFile = nullptr;
    bool m_bWriting = false;
    INT64 m_nWritten = 0;
    bool m_bWriteFailed = false; // a write came back short: the commit is refused
    std::string m_strTarget;     // host path being replaced (write-truncate only)
    std::string m_strTmpPath;    // temporary file beside it
};
