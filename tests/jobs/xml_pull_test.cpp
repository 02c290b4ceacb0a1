// The pull reader of sheet parts: every document gives the same events whatever the chunk size
// of its source, and broken XML ends in an error, never in a guess.
#include "jobs/workbook/xml_pull.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace kroveld {
namespace {

// The events as one line: "<name depth attr=value>" (attributes r and t), "</name depth>",
// 'text', "." for the end and "!" for an error.
std::string Trace(const std::string& xml, std::size_t chunk) {
  std::size_t at = 0;
  XmlPull pull([&](char* buffer, std::size_t size) -> long long {
    const std::size_t n = std::min({size, chunk, xml.size() - at});
    std::memcpy(buffer, xml.data() + at, n);
    at += n;
    return static_cast<long long>(n);
  });
  std::string out;
  for (int guard = 0; guard < 100; ++guard) {
    const XmlPull::Event e = pull.Next();
    const std::string depth = std::to_string(pull.Depth());
    if (e == XmlPull::Event::kStart) {
      out += "<" + std::string(pull.Name()) + depth;
      std::string_view value;
      for (const char* name : {"r", "t"}) {
        if (pull.Attribute(name, value)) out += " " + std::string(name) + "=" + std::string(value);
      }
      out += ">";
    } else if (e == XmlPull::Event::kEnd) {
      out += "</" + std::string(pull.Name()) + depth + ">";
    } else if (e == XmlPull::Event::kText) {
      out += "'" + std::string(pull.Text()) + "'";
    } else {
      out += e == XmlPull::Event::kDone ? "." : "!";
      // A finished reader stays finished.
      if (pull.Next() != e) out += "?";
      return out;
    }
  }
  return out + "(endless)";
}

TEST(XmlPull, SameEventsInAnyChunkSize) {
  const struct {
    const char* xml;
    const char* events;
  } cases[] = {
      // References: named, decimal, hex; an unknown one is kept as it stands.
      {"<a>x&amp;y&lt;&#65;&#x42;&foo;&#0;</a>", "<a0>'x&y<AB&foo;&#0;'</a0>."},
      // Line ends become LF in text; white space in attribute values becomes blanks.
      {"<a t=\"x\ty\r\nz\">1\r\n2\r3</a>", "<a0 t=x y z>'1\n2\n3'</a0>."},
      // Prefixes are dropped, an empty element gives start and end, depth counts from the root.
      {"<x:w xmlns:x='u'><x:c x:r=\"A1\" t='s'/><v>7</v></x:w>",
       "<w0><c1 r=A1 t=s></c1><v1>'7'</v1></w0>."},
      // Declaration, comment and processing instruction are skipped; CDATA is text as it stands.
      {"<?xml version=\"1.0\"?>\r\n<!-- <a> --><a><![CDATA[<b>&amp;]]>x<?pi?></a>\n",
       "<a0>'<b>&amp;''x'</a0>."},
      {"<a t='x>y' r=\"&quot;1&quot;\"/>", "<a0 r=\"1\" t=x>y></a0>."},
      {"<a>  <b>\n</b ></a>", "<a0>'  '<b1>'\n'</b1></a0>."},
      // Broken documents.
      {"", "!"},
      {"   ", "!"},
      {"<a><b></a></b>", "<a0><b1>!"},
      {"<a><b>text", "<a0><b1>!"},
      {"<a>text</a", "<a0>'text'!"},
      {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "!"},
      {"<a/><b/>", "<a0></a0>!"},
      {"<a/>x", "<a0></a0>!"},
      {"</a>", "!"},
      {"<a t=x/>", "!"},
      {"<a t='x/>", "!"},
      {"<a><![CDATA[x</a>", "<a0>!"},
      {"x<a/>", "!"},
  };
  for (const auto& c : cases) {
    for (std::size_t chunk : {std::size_t{1}, std::size_t{3}, std::size_t{1} << 20}) {
      EXPECT_EQ(Trace(c.xml, chunk), c.events) << c.xml << " in chunks of " << chunk;
    }
  }
}

TEST(XmlPull, AFailingSourceIsAnError) {
  int calls = 0;
  XmlPull pull([&](char* buffer, std::size_t) -> long long {
    if (++calls > 1) return -1;
    std::memcpy(buffer, "<a><b>", 6);
    return 6;
  });
  EXPECT_EQ(pull.Next(), XmlPull::Event::kStart);
  EXPECT_EQ(pull.Next(), XmlPull::Event::kStart);
  EXPECT_EQ(pull.Next(), XmlPull::Event::kError);
}

// A text run longer than any cell holds is refused instead of being gathered without end.
TEST(XmlPull, UnendingTextIsRefused) {
  long long served = 0;
  XmlPull pull([&](char* buffer, std::size_t size) -> long long {
    if (served == 0) {
      std::memcpy(buffer, "<a>", 3);
      served = 3;
      return 3;
    }
    std::memset(buffer, 'x', size);
    served += static_cast<long long>(size);
    return static_cast<long long>(size);
  });
  EXPECT_EQ(pull.Next(), XmlPull::Event::kStart);
  EXPECT_EQ(pull.Next(), XmlPull::Event::kError);
  EXPECT_LT(served, 64LL << 20);
}

}  // namespace
}  // namespace kroveld
