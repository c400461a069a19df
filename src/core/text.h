// The program's own string helpers. Nearly every module calls them: bounded copies and comparisons
// that accept null texts. Their rules differ from the C library's in small, intended ways.
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
// Lower-cases A to Z in place, nothing else; gives its argument.
char *strlwr(char *text);
// Gives 1 (0 for null). The text keeps its trailing blanks.
int s_strtrm(char *text);
// Appends the formatted text (at most 1023 characters of it) to `des`, which must have the room.
[[gnu::format(printf, 2, 3)]] char *s_strcat(char *des, const char *format, ...);
// Grows the heap text `str` by `add`. The caller owns and frees the result; without memory it is
// `str` unchanged. A null `str` gives a new text.
char *s_stradd(char *str, const char *add);
// A heap copy of `text`, which the caller frees. If memory runs out prints so and returns null.
char *maistrdup(const char *text);
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

// --- Quotes and characters ---

// What stands between the first double quote and the next (or the end); "" without a quote.
char *remove_quote(const char *str);
// Replaces each `from` by `to` in place.
char *char_replace(char *str, char from, char to);

// --- Sorting ---

// Sorts in place with the contract of qsort (ISO C 7.22.5.2). Not stable.
void myqsort(void *base, std::size_t nmemb, std::size_t size,
             int (*compar)(const void *, const void *));
// Swaps two records of `size` bytes.
void exchange(void *a, void *b, std::size_t size);
