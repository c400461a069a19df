// A store that keeps its messages for a test to look at.
#pragma once

#include "support/store_texts.h"
#include "unit/kept_messages.h"

inline texts errors;
inline texts debug_messages;

// Initialised, without names; cleared at the end of its scope.
class recording_store {
  protected:
    recording_store() {
        ini_init(&ini, keep_in<errors>, keep_in<debug_messages>);
        errors.clear();
        debug_messages.clear();
    }

    ~recording_store() { ini_clear(&ini); }

    ini_settings ini{};
};
