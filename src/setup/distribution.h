// The parts of a distribution, which lies unpacked in the current directory. The flows copy from
// here.
#pragma once

#include "setup/answer_store.h"

#include <string>

inline constexpr const char *templates_source = "./tpl";
inline constexpr const char *wap_source = "./wap";
inline constexpr const char *images_source = "./img";
inline constexpr const char *manuals_source = "./manuals";

// Returns the name of the product's program in the current directory.
std::string product_program(pINI_SETTINGS ini);
