// JSON as commands answer it.
#include "tavctl/words/json.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>

namespace {

using tavctl::Json;
using testing::ElementsAre;
using testing::Pair;

TEST(JsonText, HasEachKindOfValueInTheOrderGiven) {
    Json list = Json::array();
    list.push_back(std::uint8_t{7});
    list.push_back(std::numeric_limits<std::uint64_t>::max());
    list.push_back(-3);
    const Json whole{{"z", nullptr},
                     {"truth", true},
                     {"list", std::move(list)},
                     {"texts", std::vector<std::string>{"a", "b"}},
                     {"a", std::string_view("\xC3\xB6\"\n")},
                     {"empty", Json::array()}};
    EXPECT_EQ(whole.line(), "{\"z\":null,\"truth\":true,\"list\":[7,18446744073709551615,-3],"
                            "\"texts\":[\"a\",\"b\"],\"a\":\"\xC3\xB6\\\"\\n\",\"empty\":[]}\n");
}

TEST(JsonText, BytesThatAreNotUtf8AreReplaced) {
    EXPECT_EQ(Json("a\xFFz").line(), "\"a\xEF\xBF\xBDz\"\n");
}

TEST(JsonText, CopiesAreValuesOfTheirOwn) {
    const Json first{{"a", 1}};
    Json second = first;
    second.add("b", 2);
    Json third;
    third = second;
    third.add("a", 3);
    EXPECT_EQ(first.line(), "{\"a\":1}\n");
    EXPECT_EQ(second.line(), "{\"a\":1,\"b\":2}\n");
    EXPECT_EQ(third.line(), "{\"a\":3,\"b\":2}\n");
}

TEST(JsonText, OnlyObjectsAreReadBack) {
    for (const char* text : {"", "{", "[1]", "\"text\"", "{} {}", "{\"a\":\"\xFF\"}"})
        EXPECT_FALSE(Json::parsedObject(text)) << text;
    EXPECT_TRUE(Json::parsedObject("{}")->empty());
    const auto object = Json::parsedObject(R"({"b":"text","a":{"c":1,"d":{}},"e":[2]})");
    ASSERT_TRUE(object);
    EXPECT_FALSE(object->empty());
    EXPECT_EQ(object->textOf("b"), "text");
    EXPECT_EQ(object->textOf("e"), std::nullopt);
    EXPECT_EQ(object->textOf("missing"), std::nullopt);
    EXPECT_THAT(object->leaves(),
                ElementsAre(Pair("b", "text"), Pair("a.c", "1"), Pair("e", "[2]")));
}

} // namespace
