// The program's own string and path helpers. Nearly every room calls them: bounded copies,
// comparisons that bear null texts, and the joining and splitting of Unix paths ("/" only). Their
// rules differ from the C library's in small, intended ways.
//
// Functions that return a text of their own keep it in one buffer each, overwritten by the next
// call of the same function; copy what is needed longer.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

struct text_freer {
    void operator()(char *text) const { std::free(text); }
};

// A text on the heap (malloc), freed when it goes.
using heap_text = std::unique_ptr<char, text_freer>;

// --- Bounded copies ---

// Copies at most `len` characters of `src` into `dst`, which holds len + 1 bytes; a null `src`
// gives "". dst[len] is always set to NUL as well. Gives the NUL behind the copied text; `dst`
// when either is null.
char *ncpy(char *dst, const char *src, std::size_t len);

// Appends `src` until `dst` (len + 1 bytes) holds `len` characters; dst[len] is always set to NUL.
// Gives `dst`; a null on either side changes nothing.
char *ncat(char *dst, const char *src, std::size_t len);

// Copy and append where `len` is the size of `dst` in bytes. Give `dst`; a null on either side
// leaves it unchanged.
char *lcpy(char *dst, const char *src, std::size_t len);
char *lcat(char *dst, const char *src, std::size_t len);

// --- The C library's functions, bearing null texts ---

// Copies `src` into `dst`, which must be large enough; a null `src` makes it "".
char *s_strcpy(char *dst, const char *src);

// Comparisons. A null on either side compares as 1, so that null never equals anything.
int s_strcmp(const char *a, const char *b);
// Ignores case. A prefix never compares as negative: 1 whichever text is the shorter.
int s_stricmp(const char *a, const char *b);
// Compare n characters: 0 exactly when both texts have n characters and these agree; 1 when either
// ends or they part before the n-th. Callers test prefixes with it.
int s_strncmp(const char *a, const char *b, std::size_t n);
int s_strnicmp(const char *a, const char *b, std::size_t n);

// Lower-cases in place; gives its argument.
char *s_strlwr(char *text);
// Gives 1 (0 for null). The text keeps its trailing blanks.
int s_strtrm(char *text);
// Appends the formatted text (at most 1023 characters of it) to `des`, which must have the room.
[[gnu::format(printf, 2, 3)]] char *s_strcat(char *des, const char *format, ...);
// Grows the heap text `str` by `add`. The caller owns and frees the result; without memory it is
// `str` unchanged. A null `str` gives a new text.
char *s_stradd(char *str, const char *add);
const char *s_strstr(const char *hay, const char *needle);
const char *s_strchr(const char *text, int character);
// The place in `hay` of the first match ignoring case, or null.
const char *s_stristr(const char *hay, const char *needle);
std::size_t s_strlen(const char *text);
// The leading decimal number, 0 without one; what no int can hold becomes the nearest that it can.
int s_atoi(const char *text);

// Splits a text at any character of `sep`. A text starts anew (at most 1023 characters of it are
// copied), null goes on; null after the last token. Separators are not skipped: two in a row give
// an empty token.
char *s_strtoken(const char *string, const char *sep);

// What follows the first `separator` of `text`; nothing when it holds none.
std::string_view text_after(std::string_view text, char separator);

// --- Quotes and file names ---

// What stands between the first double quote and the next (or the end); "" without a quote.
char *remove_quote(const char *str);
// The letters, digits and . _ * - # : / @ % of `file`, a blank as "_", nothing else; at most the
// first 511 characters are looked at.
char *valid_file(const char *file);
// Replaces each `from` by `to` in place.
char *char_replace(char *str, char from, char to);

// --- Paths ---

// Joins a directory and a file, which goes through `valid_file`, with one "/" between them. Either
// may be missing (null or ""). A file whose second character is ":" is joined without the "/".
char *attach_path(const char *work_path, const char *file);
// Adds an extension; the "." between is added when `ext` has none.
char *attach_ext(const char *path_file, const char *ext);
// Cuts at the last "." of the whole text, directories included. A final "." goes only when it
// stands behind a character other than "." that is not the first.
char *strip_ext(const char *in);
// What follows the last "/"; without its extension when `rm_extend` is set.
char *strip_path(const char *in, int rm_extend);
// The directory with its "/"; null when there is none.
char *strip_filename(const char *in);
// `strip_path(path, 0)` when `want_remove` is set, else `strip_filename(path)`; null for an empty
// result.
char *remove_path(const char *path, int want_remove);

// --- Sorting ---

// Sorts in place with the contract of qsort (ISO C 7.22.5.2). Not stable.
void myqsort(void *base, std::size_t nmemb, std::size_t size,
             int (*compar)(const void *, const void *));
// Swaps two records of `size` bytes.
void exchange(void *a, void *b, std::size_t size);
