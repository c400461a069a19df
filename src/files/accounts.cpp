#include "files/accounts.h"

#include "core/log.h"
#include "core/place.h"
#include "core/process.h"
#include "core/stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace {

bool is_executable(const char *path) {
    const named_place program = locate(path);
    struct stat entry {};
    return program.directory.look(program.name.c_str(), entry) &&
           (entry.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
}

// The most that is read of getent. A group's entry names all its members.
constexpr std::size_t answer_limit = 65536;

struct users {
    using entry = passwd;
    static constexpr const char *name = "passwd";
    static const char *file(const account_sources &sources) { return sources.users; }
    static const entry *next(std::FILE *stream) { return ::fgetpwent(stream); }
    static const char *name_of(const entry &found) { return found.pw_name; }
};

struct groups {
    using entry = group;
    static constexpr const char *name = "group";
    static const char *file(const account_sources &sources) { return sources.groups; }
    static const entry *next(std::FILE *stream) { return ::fgetgrent(stream); }
    static const char *name_of(const entry &found) { return found.gr_name; }
};

template <typename Database>
const typename Database::entry *find_in_file(std::string_view name, const char *file) {
    const stream_handle stream = open_plain_file(file);
    while (stream) {
        const auto *entry = Database::next(stream.get());
        if (entry == nullptr || Database::name_of(*entry) == name) {
            return entry;
        }
    }
    return nullptr;
}

// Whether getent takes the text for an ID: what strtoul (ISO C) reads to its end.
bool is_number_to_getent(std::string_view text) {
    return text.find_first_not_of("0123456789+- \t\r\f\v") == std::string_view::npos;
}

std::string answer_of(const char *getent, const char *database, const char *name) {
    std::optional<std::string> answer = output_of({getent, database, name}, answer_limit);
    if (!answer) {
        emsg("Cannot ask %s for %s %s: %s", getent, database, name, std::strerror(errno));
        return "";
    }
    return *answer;
}

std::string ask_getent(const char *database, const char *name, const account_sources &sources) {
    const auto getent = std::find_if(sources.getents.begin(), sources.getents.end(), is_executable);
    return getent != sources.getents.end() ? answer_of(*getent, database, name) : "";
}

// Returns the entry that getent prints: it may write the name in another way.
template <typename Database>
const typename Database::entry *find_by_getent(const char *name, const account_sources &sources) {
    std::string answer = ask_getent(Database::name, name, sources);
    if (answer.empty()) {
        return nullptr;
    }
    const stream_handle stream(::fmemopen(answer.data(), answer.size(), "r"));
    return stream ? Database::next(stream.get()) : nullptr;
}

template <typename Database>
const typename Database::entry *find(const char *name, const account_sources &sources) {
    // No name begins with these: entries of NIS do in the files, and options do in a command.
    if (*name == '+' || *name == '-') {
        return nullptr;
    }
    const auto *entry = find_in_file<Database>(name, Database::file(sources));
    if (entry != nullptr || is_number_to_getent(name)) {
        return entry;
    }
    return find_by_getent<Database>(name, sources);
}

} // namespace

const passwd *find_user(const char *name, const account_sources &sources) {
    return find<users>(name, sources);
}

const group *find_group(const char *name, const account_sources &sources) {
    return find<groups>(name, sources);
}
