#include "core/text.h"

#include "core/console.h"
#include "core/format.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace {

// Characters compare as unsigned, as those of strcmp do (ISO C 7.24.4).
int upper(char character) {
    return std::toupper(static_cast<unsigned char>(character));
}

int byte_of(char character) {
    return static_cast<unsigned char>(character);
}

// A text that ends, or differs, before the n-th character compares as 1, whichever is the greater:
// callers test prefixes with it.
int compare_counted(const char *a, const char *b, std::size_t n, int (*fold)(char)) {
    for (; n > 0; a++, b++, n--) {
        if (*a == '\0' || *b == '\0') {
            return 1;
        }
        if (const int difference = fold(*a) - fold(*b); difference != 0) {
            return n == 1 ? difference : 1;
        }
    }
    return 0;
}

// Moves the records from lb to ub that are smaller than the middle one to its left and the greater
// ones to its right. Returns where the middle one ends up.
char *part_segment(char *lb, char *ub, std::size_t size,
                   int (*compar)(const void *, const void *)) {
    const std::size_t records = static_cast<std::size_t>(ub - lb) / size;
    exchange(lb, lb + records / 2 * size, size);
    char *i = lb + size;
    char *j = ub;
    for (;;) {
        while (i < j && compar(lb, i) > 0) {
            i += size;
        }
        while (j >= i && compar(j, lb) > 0) {
            j -= size;
        }
        if (i >= j) {
            break;
        }
        exchange(i, j, size);
        j -= size;
        i += size;
    }
    exchange(lb, j, size);
    return j;
}

} // namespace

char *ncpy(char *dst, const char *src, std::size_t len) {
    if (dst == nullptr) {
        return dst;
    }
    if (src == nullptr) {
        *dst = '\0';
        return dst;
    }
    const std::size_t length = ::strnlen(src, len);
    std::memmove(dst, src, length); // a caller may copy a text within itself
    dst[length] = '\0';
    dst[len] = '\0'; // required, also after a shorter text
    return dst + length;
}

char *ncat(char *dst, const char *src, std::size_t len) {
    if (dst == nullptr || src == nullptr) {
        return dst;
    }
    const std::size_t used = ::strnlen(dst, len);
    ncpy(dst + used, src, len - used);
    return dst;
}

char *lcpy(char *dst, const char *src, std::size_t len) {
    if (dst != nullptr && src != nullptr && len > 0) {
        const std::size_t length = ::strnlen(src, len - 1);
        std::memmove(dst, src, length);
        dst[length] = '\0';
    }
    return dst;
}

char *lcat(char *dst, const char *src, std::size_t len) {
    if (dst != nullptr && src != nullptr) {
        const std::size_t used = ::strnlen(dst, len);
        lcpy(dst + used, src, len - used);
    }
    return dst;
}

char *s_strcpy(char *dst, const char *src) {
    if (dst != nullptr) {
        const std::string_view text = src != nullptr ? src : "";
        std::memmove(dst, text.data(), text.size());
        dst[text.size()] = '\0';
    }
    return dst;
}

int s_strcmp(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) {
        return 1;
    }
    // Required: the difference itself; of strcmp only the sign is certain (ISO C 7.24.4.2).
    const int difference = byte_of(*a) - byte_of(*b);
    return difference != 0 ? difference : std::strcmp(a, b);
}

int s_stricmp(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) {
        return 1;
    }
    for (; *a != '\0' && *b != '\0'; a++, b++) {
        if (const int difference = upper(*a) - upper(*b); difference != 0) {
            return difference;
        }
    }
    return *a == *b ? 0 : 1; // required: 1 also if the first text is the shorter one
}

int s_strncmp(const char *a, const char *b, std::size_t n) {
    return a == nullptr || b == nullptr ? 1 : compare_counted(a, b, n, byte_of);
}

int s_strnicmp(const char *a, const char *b, std::size_t n) {
    return a == nullptr || b == nullptr ? 1 : compare_counted(a, b, n, upper);
}

char *s_strlwr(char *text) {
    for (char *at = text; at != nullptr && *at != '\0'; at++) {
        *at = static_cast<char>(std::tolower(byte_of(*at)));
    }
    return text;
}

char *strlwr(char *text) {
    std::transform(text, text + std::strlen(text), text, [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return text;
}

int s_strtrm(const char *text) {
    // Required: the scan for trailing blanks starts at the NUL, which is none; nothing is cut.
    return text != nullptr ? 1 : 0;
}

char *s_strcat(char *des, const char *format, ...) {
    if (des == nullptr || format == nullptr) {
        return des;
    }
    bounded_text<1024> scratch;
    std::va_list arguments;
    va_start(arguments, format);
    scratch.vformat(format, arguments);
    va_end(arguments);
    s_strcpy(des + std::strlen(des), scratch.c_str());
    return des;
}

char *s_stradd(char *str, const char *add) {
    if (add == nullptr) {
        return str;
    }
    const std::size_t used = s_strlen(str);
    auto *grown = static_cast<char *>(std::realloc(str, used + std::strlen(add) + 5));
    if (grown == nullptr) {
        return str;
    }
    s_strcpy(grown + used, add);
    return grown;
}

char *maistrdup(const char *text) {
    char *copy = ::strdup(text);
    if (copy == nullptr) {
        print("NOT ENOUGH MEMORY ALLOCATED ERROR");
    }
    return copy;
}

const char *s_strstr(const char *hay, const char *needle) {
    return hay == nullptr || needle == nullptr ? nullptr : std::strstr(hay, needle);
}

const char *s_strchr(const char *text, int character) {
    return text == nullptr ? nullptr : std::strchr(text, static_cast<unsigned char>(character));
}

const char *s_stristr(const char *hay, const char *needle) {
    if (hay == nullptr || needle == nullptr) {
        return nullptr;
    }
    const std::string_view where(hay);
    const std::string_view what(needle);
    const auto found = std::search(where.begin(), where.end(), what.begin(), what.end(),
                                   [](char one, char other) { return upper(one) == upper(other); });
    // An empty needle is found at the start of any text, where an empty one ends as well.
    return found == where.end() && !what.empty() ? nullptr : hay + (found - where.begin());
}

std::size_t s_strlen(const char *text) {
    return text != nullptr ? std::strlen(text) : 0;
}

int s_atoi(const char *text) {
    constexpr long lowest = std::numeric_limits<int>::min();
    constexpr long highest = std::numeric_limits<int>::max();
    return text != nullptr
               ? static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), lowest, highest))
               : 0;
}

char *s_strtoken(const char *string, const char *sep) {
    static std::array<char, 1024> buffer{};
    static char *position = nullptr;

    if (string != nullptr) {
        lcpy(buffer.data(), string, buffer.size());
        position = buffer.data();
    }
    if (sep == nullptr || position == nullptr) {
        return nullptr;
    }
    char *token = position;
    char *separator = std::strpbrk(position, sep);
    if (separator != nullptr) {
        *separator = '\0';
        position = separator + 1;
    } else {
        position = nullptr; // that was the last token
    }
    return token;
}

std::string_view text_after(std::string_view text, char separator) {
    const std::size_t at = text.find(separator);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    strlwr(lower.data());
    return lower;
}

char *remove_quote(const char *str) {
    static path_text result;
    const std::string_view quoted = text_after(str != nullptr ? str : "", '"');
    result.assign(quoted.substr(0, quoted.find('"')));
    return result.data();
}

char *char_replace(char *str, char from, char to) {
    std::replace(str, str + std::strlen(str), from, to);
    return str;
}

void exchange(void *a, void *b, std::size_t size) {
    auto *one = static_cast<char *>(a);
    auto *other = static_cast<char *>(b);
    if (one != other) {
        std::swap_ranges(one, one + size, other);
    }
}

void myqsort(void *base, std::size_t nmemb, std::size_t size,
             int (*compar)(const void *, const void *)) {
    struct range {
        char *lower;
        char *upper;
    };
    // The shorter segment is sorted first, so 32 waiting ones are enough for any 32-bit count.
    std::array<range, 32> stack{};
    std::size_t depth = 0;

    if (base == nullptr || nmemb < 2 || size == 0) {
        return;
    }
    auto *first = static_cast<char *>(base);
    stack[depth++] = {first, first + (nmemb - 1) * size};
    while (depth > 0) {
        auto [lb, ub] = stack[--depth];
        while (lb < ub) {
            char *j = part_segment(lb, ub, size, compar);
            if (j - lb > ub - j) {
                if (lb + size < j) {
                    stack[depth++] = {lb, j - size};
                }
                lb = j + size;
            } else {
                if (j + size < ub) {
                    stack[depth++] = {j + size, ub};
                }
                if (j == lb) {
                    break;
                }
                ub = j - size;
            }
        }
    }
}
