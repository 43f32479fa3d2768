// entry_tree - the entries of one dictionary that a host gives by paths of names:
//
//     "/DecodeParms/Columns" = "640"       /DecodeParms
//     "/Filter" = "/FlateDecode"           <<
//                                          /Columns 640
//                                          >>
//                                          /Filter /FlateDecode
//
// Unlike JTPDFDict, whose files must stay as they are, it nests whatever paths come together, and
// values may hold line ends.
#ifndef JTPDF_OBJECTS_ENTRY_TREE_H
#define JTPDF_OBJECTS_ENTRY_TREE_H

#include <map>
#include <string>
#include <string_view>

class EntryTree {
 public:
  // Sets an entry, replacing an earlier value. Returns whether it could: key has to be a path of
  // names and value one object (see syntax.h), and no path may lead through a value.
  bool Set(std::string_view key, std::string_view value);

  // Sets an entry of our own, which is right: it takes the place of what is in its way.
  void Overrule(std::string_view key, std::string_view value);

  bool IsEmpty() const { return entries.empty(); }
  void Clear() { entries.clear(); }

  // The text between the dictionary's "<<" and ">>", every line with its end.
  std::string AsString() const;

 private:
  // Of the type under JTPDFDict: one of another order would add 5 kB to the library.
  using Entries = std::map<std::string, std::string>;

  // Whether a path leads through key, or key through a path.
  bool IsInTheWay(const std::string& key) const;

  Entries entries;
};

#endif  // JTPDF_OBJECTS_ENTRY_TREE_H
