// A pull reader for the large parts of a workbook package (sheets, shared strings): it reads the
// XML in chunks from a byte source and hands out one element start, element end or text at a time,
// so a part of any size is read in a buffer of bounded size. It knows what workbook parts use:
// elements with attributes, the five named entities and character references, CDATA, comments and
// processing instructions; a document type declaration is refused.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

class XmlPull {
 public:
  // Fills the buffer with up to `size` bytes; returns the count, 0 at the end, -1 on failure.
  using Source = std::function<long long(char* buffer, std::size_t size)>;
  enum class Event { kStart, kEnd, kText, kDone, kError };

  explicit XmlPull(Source source);

  // The next event. An empty element (<x/>) gives kStart then kEnd. kDone comes after the root
  // element has ended; kError (and again kError) for broken or truncated XML or a failed source.
  Event Next();

  // Local name (without a namespace prefix) of the element of kStart or kEnd.
  std::string_view Name() const { return name_; }
  // Depth of the element of kStart or kEnd (the root is 0); for kText the depth of its parent.
  int Depth() const { return depth_; }
  // Decoded value of an attribute of the element of kStart, by local name; false when absent.
  bool Attribute(std::string_view local, std::string_view& value) const;
  // Decoded text of kText (entities resolved, line ends made LF).
  std::string_view Text() const { return text_; }

 private:
  bool Fill();
  bool Ensure(std::size_t n);
  bool Find(std::size_t& at, std::string_view what);
  bool FindTagEnd(std::size_t& at);
  Event Fail();
  Event ReadTag(bool& skipped);
  bool ReadAttributes(std::string_view rest);

  Source source_;
  std::string buffer_;
  std::size_t pos_ = 0;
  bool source_ended_ = false;
  bool failed_ = false;
  bool done_ = false;
  bool pending_end_ = false;  // the kEnd owed for <x/>
  bool root_seen_ = false;
  int depth_ = 0;
  int open_count_ = 0;
  std::string name_;
  std::string text_;
  std::string open_;  // names of the open elements, each followed by '\n'
  struct Attr {
    std::size_t name, name_end, value, value_end;  // offsets into attr_text_
  };
  std::string attr_text_;  // local names and decoded values of the current element's attributes
  std::vector<Attr> attrs_;
};

}  // namespace kroveld
