// dict - one PDF dictionary under construction, its nesting spelled in the keys:
//
//     "/Resources/XObject/Im1" = "7 0 R"       /Resources
//     "/Type" = "/Page"                        <<
//                                              /XObject
//                                              <<
//                                              /Im1 7 0 R
//                                              >>
//                                              >>
//                                              /Type /Page
#ifndef JTPDF_OBJECTS_DICT_H
#define JTPDF_OBJECTS_DICT_H

#include <map>
#include <string>
#include <string_view>

#include "jtpdf/types.h"

// Keys are paths of PDF names, values the texts that stand in the file. Entries come out in the
// byte-wise order of their keys.
class JTPDFDict : public std::map<std::string, std::string> {
 public:
  JTPDFDict() = default;
  // Copies and moves are declared because the destructor would suppress the moves: a vector of
  // dictionaries moves them when it grows.
  JTPDFDict(const JTPDFDict&) = default;
  JTPDFDict(JTPDFDict&&) noexcept = default;
  JTPDFDict& operator=(const JTPDFDict&) = default;
  JTPDFDict& operator=(JTPDFDict&&) noexcept = default;
  // One entry per row: ValidKey(key) = PsString(value). A later row of the same key wins. With a
  // count of 0 the rows are not read.
  JTPDFDict(unsigned int count, const JTPDFDictionaryItem* items);
  virtual ~JTPDFDict() = default;

  // The key of its bytes 0x21 to 0x7E, with a "/" in front; "/JT_DUMMY_KEY" if there are none.
  static std::string ValidKey(const std::string& key);

  // The text between the dictionary's "<<" and ">>", without a line end at its end. The keys "",
  // "/Length" and "/Stream" are left out: the object writer writes the length itself.
  std::string AsString() const;
};

// The text of one entry: the closings of the sub-dictionaries that the entry before it (whose
// parent path was previousParent) left open, the openings that this one needs, and its line.
std::string ItemsAsString(std::string_view key, std::string_view value,
                          std::string_view previousParent);

// The first component of a key path, "/" and the name, or "" if there is none. "/A/B" and "A/B"
// give "/A"; "", "/" and "//A" give "".
std::string CopyPart(std::string_view path);

// CopyPart(path), whose length is then dropped from the front of path. A component without its
// solidus therefore takes the next solidus along: "A/B" gives "/A" and leaves "B" (kept).
std::string MovePart(std::string_view& path);

// The text without leading and trailing bytes 0x01 to 0x20.
std::string TrimDictionary(std::string text);

#endif  // JTPDF_OBJECTS_DICT_H
