// The command-line help (help topic 4), printed by "/?" and "--help". The text lives once, in
// docs/help/topic-4.html (shown by the help window); the build embeds that page and the plain
// text is its <pre> block with the HTML entities decoded.
#pragma once

#include <string>
#include <string_view>

namespace kroveld {

const std::string& CommandLineHelpText();

// The text of the first <pre> block of a help page, entities (&lt; &gt; &quot; &amp;) decoded;
// empty when the page has none.
std::string PlainTextOfHelpPage(std::string_view html);

}  // namespace kroveld
