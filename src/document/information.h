// information - the document information dictionary (ISO 32000-1, 14.3.3).
#ifndef JTPDF_DOCUMENT_INFORMATION_H
#define JTPDF_DOCUMENT_INFORMATION_H

#include <string>

#include "objects/dict.h"
#include "output/object_writer.h"

class DocumentInformation {
 public:
  // Null texts count as empty.
  DocumentInformation(const wchar_t* creator, const wchar_t* author);

  // value may be null, which counts as empty.
  void SetItem(const char* key, const wchar_t* value);
  bool GetMark() const { return mark; }
  void SetMark(bool value) { mark = value; }

  // The host's items and, over them, the document's own (kept: they always win).
  JTPDFDict MakeDict() const;

  // Writes the dictionary and returns its number.
  int Write(ObjectWriter& out) const;

 private:
  std::wstring creator;
  std::wstring author;
  bool mark = false;
  JTPDFDict items;
};

#endif  // JTPDF_DOCUMENT_INFORMATION_H
