# Writes the kroveld(1) man page from the command-line help page, so that the page shown by the
# help window, the text printed by "kroveld /?" and the man page are one text.
# Usage: cmake -DPAGE=docs/help/topic-4.html -DOUT=kroveld.1 -DVERSION=x.y.z -P man_page.cmake
file(READ "${PAGE}" html)
string(FIND "${html}" "<pre>" begin)
string(FIND "${html}" "</pre>" end)
if(begin EQUAL -1 OR end EQUAL -1)
  message(FATAL_ERROR "${PAGE}: no <pre> block to make the man page from")
endif()
math(EXPR begin "${begin} + 5")
math(EXPR length "${end} - ${begin}")
string(SUBSTRING "${html}" ${begin} ${length} text)
string(REPLACE "&lt;" "<" text "${text}")
string(REPLACE "&gt;" ">" text "${text}")
string(REPLACE "&quot;" "\"" text "${text}")
string(REPLACE "&amp;" "&" text "${text}")
# roff: a backslash is written \e; a line may not start with a control character.
string(REPLACE "\\" "\\e" text "${text}")
string(REGEX REPLACE "\n([.'])" "\n\\\\&\\1" text "${text}")
# The first line of the block is the topic's title; the man page has its own heading.
string(FIND "${text}" "\n\n" title_end)
math(EXPR title_end "${title_end} + 2")
string(SUBSTRING "${text}" ${title_end} -1 text)
string(TIMESTAMP year "%Y" UTC)
file(WRITE "${OUT}" ".TH KROVELD 1 \"${year}\" \"kroveld ${VERSION}\" \"User Commands\"
.SH NAME
kroveld \\- convert fixed-column text reports into spreadsheets and CSV files
.SH SYNOPSIS
.B kroveld
.br
.B kroveld
.B \\-i
.I input
.B \\-o
.I output
.RB [ \\-r
.IR recipe ]
.RI [ options ]
.br
.B kroveld
.BI /I input
.BI /O output
.RI [ /R recipe ]
.RI [ switches ]
.SH DESCRIPTION
Without arguments
.B kroveld
opens its window. With arguments it converts without opening a window, as described below.
.PP
.nf
${text}.fi
.SH FILES
.TP
.I ~/.config/kroveld/config.ini
settings and recent files of the window
.TP
.I /usr/share/doc/kroveld/help/index.html
the help pages
.SH SEE ALSO
The help pages, opened from the window's Help menu.
")
