// SPDX-License-Identifier: BSD-3-Clause
// What a scenario file may say, and how it is told what is wrong with it.
#include "test_scenario.h"

#include <nlohmann/json.hpp>

#include <set>

namespace ipmib::simulated
{
namespace
{

Json load(const std::string &path)
{
    return Json::parse(std::ifstream(IPMIB_SOURCE_DIR "/" + path));
}

// Without the name of the file.
std::string errorOf(const std::string &text)
{
    const ScenarioFile file(text);
    try {
        readScenario(file.path());
    } catch (const ScenarioError &error) {
        const std::string message = error.what();
        EXPECT_TRUE(message.starts_with(file.path() + ": ")) << message;
        return message.substr(file.path().size() + 2);
    }
    return "";
}

// The names that the schema has for one of its objects, "a, b or c".
std::string keysInSchema(const std::string &definition)
{
    static const Json schema = load("docs/scenario.schema.json");
    Json object = definition.empty() ? schema : schema["$defs"][definition];
    if (object.contains("oneOf")) { // a short form, and the object
        object = object["oneOf"][1];
    }
    std::set<std::string> keys;
    for (const auto &property : object["properties"].items()) {
        keys.insert(property.key());
    }
    std::string text;
    std::size_t left = keys.size();
    for (const std::string &key : keys) {
        --left;
        text += key + (left == 0 ? "" : left == 1 ? " or " : ", ");
    }
    return text;
}

TEST(Scenario, everyKeyIsUnderstood)
{
    const Device device = readScenario(IPMIB_SOURCE_DIR "/platform/simulated/testdata/full.json").device;
    EXPECT_EQ(device.interfaces().size(), 6u);
    EXPECT_EQ(device.addresses().size(), 2u + 3u + 10u);
    EXPECT_EQ(device.neighbours().size(), 102u);
    EXPECT_EQ(device.hopLimit, 63u);
    EXPECT_EQ(device.uptimeS, 5000u);
}

TEST(Scenario, anEmptyOneIsADeviceWithNothing)
{
    const Device device = deviceOf("{}");
    EXPECT_TRUE(device.interfaces().empty());
    EXPECT_EQ(device.after(0), nullptr);
}

TEST(Scenario, whatIsWrongIsSaidWithItsPlaceAndWhatWasExpected)
{
    const Json cases = load("platform/simulated/testdata/refused.json");
    ASSERT_GT(cases.size(), 80u);
    for (const Json &refused : cases) {
        const std::string text = refused["scenario"].dump();
        const std::string expected =
            refused.contains("unknown")
                ? refused["unknown"].get<std::string>() + ": unknown key; expected " + keysInSchema(refused["keysOf"])
                : refused["error"].get<std::string>();
        EXPECT_EQ(errorOf(text), expected) << text;
    }
}

TEST(Scenario, everyObjectOfTheSchemaHasItsKeysCompared)
{
    std::set<std::string> compared;
    for (const Json &refused : load("platform/simulated/testdata/refused.json")) {
        if (refused.contains("keysOf")) {
            compared.insert(refused["keysOf"].get<std::string>());
        }
    }
    const Json schema = load("docs/scenario.schema.json");
    for (const auto &definition : schema["$defs"].items()) {
        const Json &body = definition.value();
        const bool hasKeys =
            body.contains("properties") || (body.contains("oneOf") && body["oneOf"][1].contains("properties"));
        EXPECT_EQ(compared.contains(definition.key()), hasKeys) << definition.key();
    }
}

TEST(Scenario, textThatIsNoJsonIsToldByLineAndColumn)
{
    EXPECT_EQ(errorOf("{\n  \"seed\": 1,\n}").substr(0, 18), "line 3, column 1: ");
    EXPECT_EQ(errorOf("").substr(0, 18), "line 1, column 1: ");
    EXPECT_EQ(errorOf("{} x").substr(0, 18), "line 1, column 4: ");
    EXPECT_NE(errorOf("{\"description\": \"\xFF\"}"), "");
    EXPECT_EQ(errorOf("{\"seed\": 1e999}"), "number overflow parsing '1e999'");
}

TEST(Scenario, aKeyThatStandsTwiceIsNotDroppedSilently)
{
    EXPECT_EQ(errorOf(R"({"seed": 1, "hopLimit": 3, "seed": 2})"), "the key \"seed\" stands twice in one object");
    EXPECT_EQ(errorOf(R"({"interfaces": [{"name": "a"}, {"name": "b"}]})"), "");
}

TEST(Scenario, aFileThatCannotBeReadSaysWhy)
{
    const std::pair<std::string, std::string> names[] = {
        {"/no/such/file.json", "cannot read it: No such file or directory"},
        {"/tmp", "cannot read it: Is a directory"},
        {"/dev/zero", "cannot read it: it is no regular file"},
        {"/dev/null",
         "line 1, column 1: syntax error while parsing value - unexpected end of input; expected '[', '{', "
         "or a literal"},
    };
    for (const auto &[path, reason] : names) {
        try {
            readScenario(path);
            ADD_FAILURE() << path;
        } catch (const ScenarioError &error) {
            EXPECT_EQ(error.what(), path + ": " + reason);
        }
    }
}

} // namespace
} // namespace ipmib::simulated
