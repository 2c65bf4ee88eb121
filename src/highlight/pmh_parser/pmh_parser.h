#pragma once

// pmh_parser: where the Markdown elements of a text are, for colouring the
// editor. It knows nothing about rendering; it reports spans.
//
// Contract
//   - Input: NUL-terminated UTF-8 (invalid sequences do no harm); lines end
//     with LF, CR LF or CR. Offsets in the result count code points of that
//     text: every byte that does not continue a UTF-8 sequence is one, and a
//     leading byte order mark is one too. The editor converts them to UTF-16
//     units.
//   - Each call has its own state and writes nothing global, so parses may
//     run on any thread at once. The caller owns the result and frees it with
//     pmh_free_elements().
//   - Work and memory grow linearly with the text, whatever it holds.
//
// How it works
//   The text is copied with UTF-8 continuation bytes and a byte order mark
//   left out (their offsets go to a skip list), so each code point is one
//   byte to the grammar, and "\n\n" is appended. A first pass reads blocks
//   and collects references and notes; the text of paragraphs and headings
//   goes to a raw list. A container (block quote, list item, note) joins its
//   lines without their prefixes and parses that text again as blocks; pieces
//   remember where each part came from, so offsets stay right however deep
//   the nesting. A second pass parses each raw text for inline spans. Spans
//   of pass one come before those of pass two, so a heading precedes the
//   emphasis that starts at the same place.
//
// The grammar, in PEG form (/ is ordered choice; each block rule takes whole
// lines; Sp is up to 3 spaces; Indent is 4 columns, a tab counting to the
// next multiple of 4):
//
//   Doc        <- (BlankLine / Block)*
//   Block      <- AtxHeading / HtmlBlock / Comment / Verbatim / Note / Reference
//               / HRule / Fenced / BlockQuote / ListItem / Setext / Para
//   AtxHeading <- '#'{1,6} Line, from the first column              -> H1..H6
//   HtmlBlock  <- '<' Tag (Attrs '>' ... matching '</' Tag '>' / Attrs '/>'
//                 / ('hr' / 'isindex') Attrs '>') RestOfLine       -> HTMLBLOCK
//                 Tag: address blockquote center dd dir div dl dt fieldset form
//                 frameset h1-h6 hr isindex li menu noframes noscript ol p pre
//                 script style table tbody td tfoot th thead tr ul, all lower
//                 or all upper case; tags of that name nest inside;
//                 from the first column
//   Comment    <- '<!--' ... '-->' BlankRest, from the first column -> COMMENT
//   Verbatim   <- IndentedLine (BlankLine* IndentedLine)*          -> VERBATIM
//   Note       <- Sp '[^' Id ']:' Line (BlankLine* Indent Line)*   -> NOTE, text parsed again
//   Reference  <- Sp '[' Label ']:' Sp Newline? Dest (Sp Title)? EOL (Title EOL)?
//                 Dest: '<' ... '>' or a run without spaces;
//                 Title: "..." '...' (...) to the line's end      -> REFERENCE
//   HRule      <- Sp C (Sp C){2,} EOL with C one of * - _          -> HRULE
//   Fenced     <- Sp F Info Newline (!Closer Line)* (Closer / end of container)
//                 F: ``` ```` ````` ~~~ ~~~~ ~~~~~ (or longer); Closer: the same
//                 run alone on its line; Info holds no run of 3 fence chars
//                                                                  -> VERBATIM
//   BlockQuote <- (Sp '>' ' '? Line / LazyLine / BlankLine &QuoteLine)+
//                 LazyLine: any text line                          -> BLOCKQUOTE, text parsed again
//   ListItem   <- Sp ([*+-] / [0-9]+ '.') [ \t] Line ItemLine*      -> LIST_BULLET / LIST_ENUMERATOR
//                 (the marker only); text parsed again. An item goes on over
//                 blank lines and lines that are not a marker or rule at
//                 its own indentation; after a blank line, only over indented
//                 lines; markers inside a fence do not count
//   Setext     <- Line ('='+ / '-'{2,}) EOL                        -> H1 / H2
//   Para       <- Line (!BlankLine !Interrupt !(Line Underline) Line)*
//                 Interrupt: '#', '>', a rule, a fence, a definition, or a
//                 list marker in the first column (numbers: one digit)
//
//   Inline, in each heading and paragraph text; marks are paired innermost
//   first, a closer with the nearest opener of the same kind:
//   Code       <- `{n} ... `{n}, n = 1..5, the same run           -> CODE
//   Math       <- '$$' ... '$$'                                    -> CODE (pmh_EXT_MATH)
//   Comment    <- '<!--' ... '-->'                                 -> HTML
//   AutoLink   <- '<' Scheme '://' Chars '>'                       -> AUTO_LINK_URL
//               / '<' 'mailto:'? Local '@' Domain '>'              -> AUTO_LINK_EMAIL
//   Tag        <- '<' Name Attr* '/'? '>' / '</' Name '>'          -> HTML
//   Entity     <- '&' '#'? [A-Za-z0-9]+ ';'                        -> HTML_ENTITY
//   Strong     <- '**' Inline+ '**' / '__' Inline+ '__'            -> STRONG
//   Emph       <- '*' Inline+ '*' / '_' Inline+ '_'                -> EMPH
//   Strike     <- '~~' Inline+ '~~'                                -> STRIKE (pmh_EXT_STRIKE)
//   Mark       <- '==' Inline+ '=='                                -> MARK (pmh_EXT_MARK)
//                 Openers stand before text, closers after it; '_' opens
//                 only after white space and a single one closes only
//                 before it, as it renders (snake_case, _a_. stay text)
//   Image      <- '!' Link                                         -> IMAGE
//   Link       <- '[' Inline* ']' ( '(' Dest Title? ')' / '[' Label? ']' )
//               / '[' Label ']'   (a reference must define Label)   -> LINK
//   NoteRef    <- '[^' Id ']'     (a note must define Id)           -> NOTE (pmh_EXT_NOTES)
//   InlineNote <- '^[' Inline* ']'                                  -> NOTE (pmh_EXT_NOTES)
//   BareLink   <- ('http' 's'? / 'ftp') '://' Host / 'www.' Host    -> AUTO_LINK_URL
//               / Local '@' Domain                                  -> AUTO_LINK_EMAIL
//                 (pmh_EXT_AUTOLINK; not inside link text)
//
// "$$" delimits math. Math is TeX, not Markdown, so it is coloured as CODE
// and nothing inside it (_, *, [) is read as Markdown.

#include "highlight/pmh_parser/pmh_definitions.h"

// Parses `string` (which must not be null) with the extensions of the word
// `extensions` (pmh_extensions bits) and stores in *out_result an array of
// pmh_NUM_TYPES list heads: one per element type, linked by `next`, then at
// pmh_ALL all elements, linked by `all_next`. Lists hold elements in the
// order they were found; pmh_sort_elements_by_pos() sorts them. An empty
// text gives an array of empty lists without running the grammar.
void pmh_markdown_to_elements(const char *string, int extensions, pmh_element **out_result[]);

// Sorts every list of a result in place by start; elements with the same
// start keep the order in which they were found.
void pmh_sort_elements_by_pos(pmh_element *element_lists[]);

// Frees a result and every element and string in it. Null is allowed.
void pmh_free_elements(pmh_element **elems);

// The name of an element type ("EMPH", "H1", ...); "unknown type" for a
// value outside the table.
const char *pmh_element_name_from_type(pmh_element_type type);
