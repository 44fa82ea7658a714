// The character-class table that start-up builds for the format libraries.
#include <gtest/gtest.h>

#include <vector>

#include "services/character_classes.h"

namespace {

using tollan::services::characterClass;
using tollan::services::kLetterClass;

TEST(CharacterClasses, MarksTheWesternLettersOnly)
{
    // The running library built the table at start-up. Expected: A-Z, a-z,
    // the five letters of 0x80-0x9F and 0xC0-0xFF without the
    // multiplication (0xD7) and division (0xF7) signs.
    std::vector<int> expected;
    for (const auto &[first, last] :
         {std::pair{0x41, 0x5A}, std::pair{0x61, 0x7A}, std::pair{0x8A, 0x8A}, std::pair{0x8C, 0x8C},
          std::pair{0x9A, 0x9A}, std::pair{0x9C, 0x9C}, std::pair{0x9F, 0x9F}, std::pair{0xC0, 0xD6},
          std::pair{0xD8, 0xF6}, std::pair{0xF8, 0xFF}})
        for (int c = first; c <= last; ++c) expected.push_back(c);
    ASSERT_EQ(expected.size(), 52u + 5u + 62u);

    std::vector<int> letters;
    for (int c = 0; c < 256; ++c) {
        const uint8_t classes = characterClass(static_cast<unsigned char>(c));
        EXPECT_EQ(classes & ~kLetterClass, 0) << "code " << c;
        if (classes & kLetterClass) letters.push_back(c);
    }
    EXPECT_EQ(letters, expected);
}

}  // namespace
