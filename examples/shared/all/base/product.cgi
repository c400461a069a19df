#!/bin/sh
# @TITLE@, a sample web-mail program. It answers -version, and called by a web server it shows a
# mailbox of made-up mail, built from its installed templates.
#
# Its settings are in the .ini file of its own name beside it, so one program serves under
# several names (the WML copy has an .ini of its own). It keeps nothing and sends nothing.

if [ "${1-}" = -version ] && [ -z "${GATEWAY_INTERFACE-}" ]; then
    # What follows the first lower-case v is taken as the version: the name is in capitals.
    printf 'Version: %s v%s\n' '@NAME@' '@VERSION@'
    exit 0
fi

PATH=/usr/bin:/bin
LC_ALL=C
settings_file=$(dirname "$0")/$(basename "$0" .cgi).ini
export PATH LC_ALL settings_file

exec awk '
function fail(status, message) {
    printf "Status: %s\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n%s\n", status, message
    exit 0
}

# Reads the settings: NAME, one blank or tab, VALUE. Names that may occur often are numbered from 1.
function read_settings(file,    line, got, at, name) {
    while ((got = (getline line < file)) > 0) {
        sub(/\r$/, "", line)
        at = match(line, /[ \t]/)
        if (line ~ /^#/ || !at)
            continue
        name = substr(line, 1, at - 1)
        if (name == "set" || name == "tpl_set" || name == "body_add")
            name = name "." ++how_many[name]
        setting[name] = substr(line, at + 1)
    }
    close(file)
    return got == 0
}

# The query may name a page, a mail and a template set, in plain letters and digits. What is not of
# that form is passed over.
function read_query(query,    parts, number, i, at) {
    number = split(query, parts, "&")
    for (i = 1; i <= number; i++)
        if (parts[i] ~ /^(page|mail|set)=[a-zA-Z0-9_-]+$/) {
            at = index(parts[i], "=")
            asked[substr(parts[i], 1, at - 1)] = substr(parts[i], at + 1)
        }
}

# A set line is NUMBER PATH URL NAME Set, and only the path may hold blanks. The set asked for, if
# there is one of that name, replaces the default set of templates and images.
function choose_set(    i, number, word, name) {
    for (i = 1; i <= how_many["tpl_set"]; i++) {
        number = split(setting["tpl_set." i], word, " ")
        if (number < 5)
            continue
        name = word[number - 1]
        set_name[++sets] = name
        if (name == asked["set"]) {
            setting["vlimg"] = word[number - 2]
            sub(/^[0-9]+ /, "", setting["tpl_set." i])
            setting["templates"] = substr(setting["tpl_set." i], 1, \
                length(setting["tpl_set." i]) - length(word[number - 2] " " name " Set") - 1)
            value["keep_set"] = "&set=" name
        }
    }
}

# A "set" line of the settings holds the name of an image: background or logo.
function choose_images(    i, word) {
    for (i = 1; i <= how_many["set"]; i++)
        if (split(setting["set." i], word, /[ \t]+/) == 2)
            value[word[1]] = word[2]
    for (i = 1; i <= how_many["body_add"]; i++)
        value["footer"] = value["footer"] setting["body_add." i] "\n"
}

function readable(file,    line, got) {
    got = (getline line < file)
    close(file)
    return got >= 0
}

# WML templates that were copied as a tree lie below the templates directory.
function find_template(name,    file) {
    if (setting["markup"] == "wml") {
        if (readable(file = setting["templates"] "/wap/wml/" name))
            return file
        if (readable(file = setting["templates"] "/wap/common/" name))
            return file
    }
    return readable(file = setting["templates"] "/" name) ? file : ""
}

function read_words(file,    line, at) {
    while ((getline line < file) > 0)
        if ((at = index(line, " ")))
            value["word." substr(line, 1, at - 1)] = substr(line, at + 1)
    close(file)
}

function add_mail(from, date, fresh, subject, text) {
    mails++
    mail[mails, "from"] = from
    mail[mails, "date"] = date
    mail[mails, "subject"] = subject
    mail[mails, "text"] = text
    mail[mails, "icon"] = fresh ? "new.gif" : "read.gif"
    value["unread"] += fresh
}

function open_mail(number) {
    value["number"] = number
    value["from"] = mail[number, "from"]
    value["date"] = mail[number, "date"]
    value["subject"] = mail[number, "subject"]
    value["text"] = mail[number, "text"]
    value["icon"] = mail[number, "icon"]
}

function escaped(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    gsub(/"/, "\\&quot;", text)
    gsub(/\047/, "\\&#39;", text)
    if (setting["markup"] == "wml")
        gsub(/\$/, "$$", text)
    return text
}

# Every ||name|| of the line becomes its value, or stays when there is none; what was filled in is not
# looked at again.
function filled(line,    done, from, to, name) {
    while ((from = index(line, "||"))) {
        done = done substr(line, 1, from - 1)
        line = substr(line, from + 2)
        if (!(to = index(line, "||")))
            return done "||" line
        name = substr(line, 1, to - 1)
        line = substr(line, to + 2)
        done = done (name in value ? escaped(value[name]) : "||" name "||")
    }
    return done line
}

# A line of its own can pull in another template: once, for every mail, or for every template set.
function repeat(order, name,    i) {
    if (order == "mails")
        for (i = 1; i <= mails; i++) {
            open_mail(i)
            render(name)
        }
    else if (order == "sets")
        for (i = 1; i <= sets; i++) {
            value["set"] = set_name[i]
            render(name)
        }
    else
        render(name)
}

function render(name,    file, line) {
    if (depth >= 5 || (file = find_template(name)) == "") {
        print "||" name " is missing||"
        return
    }
    if (!(file in lines_of)) {
        lines_of[file] = 0
        while ((getline line < file) > 0)
            if (line !~ /^\|\|(header:|checksum=)/)
                text_of[file, ++lines_of[file]] = line
        close(file)
    }
    render_lines(file)
}

function render_lines(file,    i, word) {
    depth++
    for (i = 1; i <= lines_of[file]; i++)
        if (text_of[file, i] ~ /^\|\|(include|mails|sets) [a-z]+\.tpl\|\|$/) {
            split(substr(text_of[file, i], 3, length(text_of[file, i]) - 4), word, " ")
            repeat(word[1], word[2])
        } else
            print filled(text_of[file, i])
    depth--
}

BEGIN {
    if (!read_settings(ENVIRON["settings_file"]))
        fail("500 Internal Server Error", "The .ini file beside the program cannot be read.")
    read_query(ENVIRON["QUERY_STRING"])

    add_mail("Ada Fielding", "12 Mar 09:14", 1, "Minutes of Tuesday", "The minutes are below.\n\n1. Birds <b>seen</b>: 41\n2. Birds heard: 12 & a half")
    add_mail("Postmaster", "12 Mar 08:02", 1, "Mailbox 80% full", "Your mailbox is nearly full. Please remove what you do not need.")
    add_mail("Tom \"Twitch\" Marsh", "11 Mar 21:47", 0, "Re: hide < 2 miles off?", "About a mile and a half, past the weir.\n\nTom")
    add_mail("Reed Bed Trust", "10 Mar 16:30", 0, "Volunteers wanted for April", "We need six pairs of boots with people in them.")
    add_mail("Ada Fielding", "9 Mar 11:05", 0, "Ringing results", "29 rings, 3 re-traps. See you on Tuesday.\n\nAda")

    value["keep_set"] = value["footer"] = value["logo"] = value["background"] = ""
    value["title"] = "@TITLE@"
    value["version"] = "@VERSION@"
    value["self"] = ENVIRON["SCRIPT_NAME"]
    value["count"] = mails
    choose_set()
    choose_images()
    value["vlimg"] = setting["vlimg"]
    value["domain"] = setting["domain"]
    read_words(setting["templates"] "/words.dat")

    page = asked["page"] == "" ? "index" : asked["page"]
    if (page !~ /^[a-z]+$/ || find_template(page ".tpl") == "")
        fail(page == "index" ? "500 Internal Server Error" : "404 Not Found", "There is no template " page ".tpl.")
    open_mail(asked["mail"] ~ /^[0-9]+$/ && (asked["mail"] + 0, "text") in mail ? asked["mail"] + 0 : 1)

    printf "Content-Type: %s; charset=utf-8\r\n\r\n", setting["markup"] == "wml" ? "text/vnd.wap.wml" : "text/html"
    render(page ".tpl")
}' </dev/null
