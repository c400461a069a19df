#include "unattended/transcript.h"

#include "core/console.h"

#include <gtest/gtest.h>

TEST(Transcript, SaysInOneLineWhatCameSinceTheMarkAndBeforeThePrompt) {
    keep_transcript();
    print("one\n  two\n");
    EXPECT_EQ(said_since_mark("[no]? "), "one two");
    mark_transcript();
    print("three\n[no]? ");
    EXPECT_EQ(said_since_mark("[no]? "), "three");
    end_transcript(false);
}
