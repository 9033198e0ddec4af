#pragma once
// Makes chosen calls of the C library fail, for chosen files, in this test program only. The
// program defines these calls itself, so that the console's code and Qt's reach them before
// the C library's: a full disk, a quota, an I/O error or a read-only share without root.
//   inject(call, error, part)   each later such call on a path holding `part` fails with
//                               `error`; a write, sync or close on a file opened by such a path;
//                               a `part` ending in "$" must end the path (a folder, not its files);
//                               `short_write`: the first write takes half of its bytes, and
//                               the writes after it fail
//   clear()                     every call works again
//   failures()                  how many calls failed since the last inject
#include <string>

namespace zel::test {

enum class Call { open, write, short_write, sync, close, rename, mkdir };

void inject(Call call, int error, const std::string& path_part);
void clear_faults();
int failures();

}  // namespace zel::test
