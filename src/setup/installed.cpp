#include "setup/installed.h"

#include "core/paths.h"
#include "files/search.h"
#include "setup/answer_loading.h"

std::string cgi_file(pINI_SETTINGS ini, answer_position name, const char *extension) {
    const std::string file = formatted("%s.%s", ini_value_num(ini, name), extension);
    return path_in(ini_value_num(ini, D_CGI_PATH), file.c_str());
}

bool is_program_installed(pINI_SETTINGS ini) {
    return file_exists(cgi_file(ini, D_CGI_NAME, "cgi").c_str()) == 1;
}

bool load_installed_ini(pINI_SETTINGS ini) {
    return load_answers(ini, cgi_file(ini, D_CGI_NAME, "ini").c_str()) != 0;
}

bool load_installed_answers(pINI_SETTINGS ini) {
    return load_answers(ini, path_in(ini_value_num(ini, D_TEMPLATES), answers_file).c_str()) != 0;
}
