#pragma once
// Sequential reading of an 8-bit text file (Latin-1) by lines and by delimited fields, as the
// settings and language files are read. A line ends at CR LF, at CR or at LF.
#include <QIODevice>
#include <QString>

namespace zel {

class TextReader {
  public:
    explicit TextReader(QIODevice& device) : device(device) {}

    bool at_end() const;
    // The next whole line without its line end. Fails with number 62 at the end of the file.
    QString line_input();
    // One delimited field: leading blanks are skipped; the field ends at a comma (which is
    // taken) or at the end of the line (which is taken too). A field that begins with a double
    // quote runs to the next double quote, and whatever follows it up to the comma or the line
    // end is dropped. Fails with number 62 at the end of the file.
    QString input_field();

  private:
    QIODevice& device;
    bool next(char& c);
    bool peek(char& c) const;
    void take_line_end(char first);
};

}  // namespace zel
