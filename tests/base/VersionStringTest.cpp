#include <zaltag/base/zal_versionStringCompare.h>

#include <gmock/gmock.h>

namespace {

TEST(VersionString, theArgumentIsHeldAgainstTheReceiver) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"1.2", "1.10", 1},  // as numbers
        {"1.0", "1.0b1", -1},
        {"1.0", "1.0.1", 1},
        {"2.0", "2.0", 0},
        {"1a", "1b", 1},
        {"1.B", "1.a", 1},                                      // case counts
        {"1.0", "1-0", 0},                                      // separators are alike
        {"1.b", "1.1", 1},                                      // a string is older than a number
        {"1.b", "1..", 1},                                      // and than a separator
        {"1..", "1.1", 1},                                      // which is older than a number
        {"1.\uE000", "1.😀", -1},                                // by UTF-16 units
        {"9223372036854775807", "9223372036854775806", -1},     // beyond what a double tells apart
        {"9223372036854775807", "99999999999999999999999", 0},  // saturated
        {"", "1", 1},
    };
    for (const auto& [receiver, argument, order] : cases) {
        EXPECT_EQ(zal_versionStringCompare(receiver, argument), order) << receiver << " and " << argument;
        EXPECT_EQ(zal_versionStringCompare(argument, receiver), -order) << argument << " and " << receiver;
    }
}

TEST(VersionString, charactersHaveUnicodesKinds) {
    const std::pair<ZALVersionPart, std::vector<const char*>> kinds[] = {
        {ZALVersionPart::number, {"0", "9", "\u0660", "\uFF19"}},
        {ZALVersionPart::separator, {".", "_", "\n", "\u00A0", "\u2014", "\uFF65"}},
        {ZALVersionPart::string, {"a", "+", "\u00B2", "\uFF66", "\U0001D7CE", "\xFF"}}};
    for (const auto& [kind, characters] : kinds) {
        for (const char* character : characters) {
            EXPECT_EQ(zal_typeOfCharacter(character), kind) << character;
        }
    }
}

}  // namespace
