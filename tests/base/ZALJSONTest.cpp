#include <zaltag/base/ZALJSON.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(JSON, readsAndWritesValues) {
    const auto value = ZALJSON::parse(R"({"b":[1,2.5,true,null,"é"],"a":-9223372036854775808,"b2":{}})");
    ASSERT_TRUE(value);
    EXPECT_EQ(ZALJSON::serialize(*value), R"({"a":-9223372036854775808,"b":[1,2.5,true,null,"é"],"b2":{}})");
    EXPECT_EQ((*value)["a"].integerValue(), std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE((*value)["missing"]["deeper"].isNull());
}

TEST(JSON, boundsTheNesting) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_TRUE(ZALJSON::parse(nested(ZALJSON::depthMax)));
    std::string error;
    EXPECT_FALSE(ZALJSON::parse(nested(ZALJSON::depthMax + 1), &error));
    EXPECT_NE(error.find("512"), std::string::npos);
    EXPECT_FALSE(ZALJSON::parse("{\"a\":1e999}"));
    EXPECT_FALSE(ZALJSON::serialize(ZALJSONValue::Object{{"\xFF", 1}}, false, &error));
    EXPECT_FALSE(ZALJSON::parse(nested(1000000)));
    EXPECT_TRUE(ZALJSON::parse(std::string(ZALJSON::lengthMax - 1, ' ') + "1"));
    EXPECT_FALSE(ZALJSON::parse(std::string(ZALJSON::lengthMax, ' ') + "1"));
}

TEST(JSON, aDescriptionShowsWhatJSONCannotHold) {
    ZALJSONValue deep = ZALJSONValue::Array{std::numeric_limits<double>::infinity(), "a\xFFz"};
    EXPECT_EQ(ZALJSON::description(deep), "[\"inf\",\"a\uFFFDz\"]");
    for (int depth = 0; depth < 2 * ZALJSON::depthMax; ++depth) {
        deep = ZALJSONValue::Array{std::move(deep)};
    }
    EXPECT_EQ(ZALJSON::description(deep).find("[\"...\"]"), std::size_t{ZALJSON::depthMax});
}

TEST(JSONValue, readsEveryTypeAsANumber) {
    const std::pair<ZALJSONValue, std::int64_t> rows[] = {{2.9, 2},
                                                          {1e300, std::numeric_limits<std::int64_t>::max()},
                                                          {true, 1},
                                                          {" 42x", 42},
                                                          {ZALJSONValue::Array{1}, 0}};
    for (const auto& [value, number] : rows) {
        EXPECT_EQ(value.integerValue(), number) << ZALJSON::description(value);
    }
    EXPECT_TRUE(ZALJSONValue("YES").boolValue() && !ZALJSONValue("0").boolValue());
    EXPECT_TRUE(ZALJSONValue("1.5").doubleValue() == 1.5 && !ZALJSONValue(5).stringValue());
}

}  // namespace
