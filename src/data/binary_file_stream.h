#pragma once
// A read-only forward stream over one file, serving one pass. Other writers are refused the
// file while it is open (a shared lock; the console's own writers replace files by rename, so
// an open stream keeps reading the file as it was).
#include <QString>
#include <cstdint>
#include <vector>

namespace zel {

class cBinaryFileStream {
  public:
    cBinaryFileStream() = default;
    ~cBinaryFileStream();
    cBinaryFileStream(const cBinaryFileStream&) = delete;
    cBinaryFileStream& operator=(const cBinaryFileStream&) = delete;

    QString file() const { return file_name; }
    // Closes any open file and opens `path`. A missing file fails with number 53.
    // `read_position` is left as it stands, so a second file on one object reads short.
    void file(const QString& path);
    int32_t Length() const { return file_length; }
    // Fills `buffer` from its start with up to `count` bytes; bytes past those delivered keep
    // their old contents. Gives 0 (or less) and closes the file once nothing is left.
    int32_t Read(std::vector<uint8_t>& buffer, int32_t count);
    void Dispose();

    QString file_name;
    int16_t file_number = 0;
    int32_t file_length = 0;
    int32_t read_position = 0;

  private:
    int descriptor = -1;
    void read_exactly(uint8_t* into, int32_t count);
};

// Whether `path` names a normal or read-only file as a directory query sees it: a directory
// counts as absent; a name beginning with "." is an ordinary name. A failing query gives its
// error number in `error_number` and false.
bool file_exists(const QString& path, int& error_number);

}  // namespace zel
