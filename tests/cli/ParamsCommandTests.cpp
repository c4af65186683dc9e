#include "CliRunner.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace tintorra::cliTest {
namespace {

std::string hexOf(double value)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llX",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return text;
}

std::string encode(std::vector<std::string> options)
{
    options.insert(options.begin(), {"params", "encode"});
    const CliRun run = runCli(options);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out.back(), '\n');
    return run.out.substr(0, run.out.size() - 1);
}

Json decode(const std::string& string)
{
    const CliRun run = runCli({"params", "decode", string});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return run.json();
}

TEST(ParamsCommand, DefaultStringHasTheFixedLayout)
{
    const std::string string = encode({});
    ASSERT_EQ(string.size(), 446u);
    EXPECT_EQ(string.substr(0, 6), "tolm01");
    // The display gamma travels as its reciprocal, the gamma kept at single precision.
    EXPECT_EQ(string.substr(6, 16), hexOf(1.0 / static_cast<double>(2.2f)));
    // Mode LChuv, both switches off, the shifted image: four zero bytes.
    EXPECT_EQ(string.substr(22, 8), "00000000");
    // The identity curve: thumb i is i / 10.
    for (int i = 0; i <= 10; ++i) {
        EXPECT_EQ(string.substr(78 + 16 * i, 16), hexOf(i / 10.0)) << "thumb " << i;
    }
    EXPECT_EQ(string.find_first_not_of("0123456789ABCDEF", 4), std::string::npos);
}

struct DecodedCase {
    std::vector<std::string> options;
    std::string pointer;
    double expected;
};

void printArguments(const std::vector<std::string>& arguments, std::ostream* os)
{
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        *os << (i == 0 ? "" : " ") << arguments[i];
    }
}

void PrintTo(const DecodedCase& c, std::ostream* os)
{
    *os << "{";
    printArguments(c.options, os);
    *os << " -> " << c.pointer << "}";
}

class ParamsRoundTrip : public testing::TestWithParam<DecodedCase> {};

TEST_P(ParamsRoundTrip, DecodesWhatWasEncoded)
{
    const DecodedCase& c = GetParam();
    const Json decoded = decode(encode(c.options));
    EXPECT_DOUBLE_EQ(decoded.at(Json::json_pointer(c.pointer)).get<double>(), c.expected)
        << c.pointer;
}

INSTANTIATE_TEST_SUITE_P(
    Options, ParamsRoundTrip,
    testing::Values(
        // A range across 0: bounds as fractions, the middle derived circularly (0, not 0.5).
        DecodedCase{{"--hue", "340:350:10:20"}, "/hue/lowerFalloff", 340.0 / 360.0},
        DecodedCase{{"--hue", "340:350:10:20"}, "/hue/lower", 350.0 / 360.0},
        DecodedCase{{"--hue", "340:350:10:20"}, "/hue/upper", 10.0 / 360.0},
        DecodedCase{{"--hue", "340:350:10:20"}, "/hue/upperFalloff", 20.0 / 360.0},
        DecodedCase{{"--hue", "340:350:10:20"}, "/hue/middle", 0.0},
        DecodedCase{{"--hue", "-20:-10:10:20"}, "/hue/lower", 350.0 / 360.0},
        // A named hue's default set: 10 degrees each side and as much again of fall-off.
        DecodedCase{{"--hue-set", "Blue"}, "/hue/middle", 240.0 / 360.0},
        DecodedCase{{"--hue-set", "Blue"}, "/hue/upperFalloff", 260.0 / 360.0},
        DecodedCase{{"--hue-set", "light blue"}, "/hue/lower", 210.0 / 360.0},
        DecodedCase{{"--hue-set", "Raspberry"}, "/hue/upperFalloff", 1.0},
        // Centre and spread: half the spread each side, as much again of fall-off.
        DecodedCase{{"--hue-center", "120", "--hue-spread", "40"}, "/hue/upper", 140.0 / 360.0},
        DecodedCase{
            {"--hue-center", "120", "--hue-spread", "40"}, "/hue/lowerFalloff", 80.0 / 360.0},
        DecodedCase{{"--hue-center", "120"}, "/hue/upperFalloff", 140.0 / 360.0},
        DecodedCase{{"--target-hue", "90"}, "/targetHue", 0.25},
        DecodedCase{{"--target-hue", "-90"}, "/targetHue", 0.75},
        DecodedCase{{"--target-hue", "450"}, "/targetHue", 0.25},
        DecodedCase{{"--target-sat", "1.7"}, "/targetSat", 1.0},
        DecodedCase{{"--target-sat", "-3"}, "/targetSat", -1.0},
        DecodedCase{{"--target-sat", "0.25"}, "/targetSat", 0.25},
        // The string carries the target brightness even though decoding never applies it.
        DecodedCase{{"--target-bri", "0.5"}, "/targetBri", 0.5},
        DecodedCase{{"--sat", "0.1:0.2:0.6:0.7"}, "/saturation/lowerFalloff", 0.1},
        DecodedCase{{"--sat", "0.1:0.2:0.6:0.7"}, "/saturation/middle", 0.4},
        DecodedCase{{"--light", "0:0.5:0.75:1"}, "/lightness/upper", 0.75},
        DecodedCase{{"--mode", "hsl"}, "/colorSpaceModel", 4},
        DecodedCase{{"--mode", "LChab"}, "/colorSpaceModel", 1},
        DecodedCase{{"--curve", "0,0.05,0.1,0.2,0.3,0.4,0.5,0.6,0.7,0.8,1"}, "/curve/1", 0.05},
        DecodedCase{{"--gamma", "1.8"}, "/gamma", 1.0 / static_cast<double>(1.8f)}));

TEST(ParamsCommand, SwitchesAndGammaComeBack)
{
    const Json decoded = decode(encode({"--preserve-hue", "--blend-to-falloff", "--gamma", "1.8"}));
    EXPECT_TRUE(decoded["preserveHue"].get<bool>());
    EXPECT_TRUE(decoded["blendToFalloffHues"].get<bool>());
    EXPECT_NEAR(decoded["displayGamma"].get<double>(), 1.8, 1e-6);
    EXPECT_EQ(decoded["version"].get<int>(), 1);
    EXPECT_EQ(decoded["curve"].size(), 11u);
}

TEST(ParamsCommand, NamedSetEqualsItsBounds)
{
    // Red's default set is 340:350:10:20, whichever way it is asked for.
    EXPECT_EQ(encode({"--hue-set", "Red"}), encode({"--hue", "340:350:10:20"}));
}

TEST(ParamsCommand, LaterOptionsOverrideAStartingString)
{
    const std::string start = encode({"--hue", "100:110:130:140", "--target-hue", "30"});
    const Json decoded = decode(encode({"--params", start, "--target-hue", "180"}));
    EXPECT_DOUBLE_EQ(decoded["targetHue"].get<double>(), 0.5);
    EXPECT_DOUBLE_EQ(decoded["hue"]["lower"].get<double>(), 110.0 / 360.0);
}

struct UsageCase {
    std::vector<std::string> arguments;
    int exitCode;
    // What the one line must contain, when it matters.
    std::string says = "";
};

void PrintTo(const UsageCase& c, std::ostream* os)
{
    *os << "{";
    printArguments(c.arguments, os);
    *os << " -> exit " << c.exitCode << "}";
}

class ParamsRefusals : public testing::TestWithParam<UsageCase> {};

TEST_P(ParamsRefusals, OneLineOnStandardErrorAndNothingElse)
{
    const CliRun run = runCli(GetParam().arguments);
    EXPECT_EQ(run.exitCode, GetParam().exitCode);
    EXPECT_TRUE(run.out.empty()) << run.out;
    ASSERT_EQ(run.errLines().size(), 1u) << run.err;
    EXPECT_EQ(run.errLines()[0].rfind("tintorra-cli: ", 0), 0u) << run.err;
    EXPECT_NE(run.errLines()[0].find(GetParam().says), std::string::npos) << run.err;
    EXPECT_EQ(run.errLines()[0].find(".;"), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, ParamsRefusals,
    testing::Values(UsageCase{{"params", "encode", "--hue", "1:2:3"}, 2},
                    UsageCase{{"params", "encode", "--hue", "a:b:c:d"}, 2},
                    UsageCase{{"params", "encode", "--sat", "0:0.5:0.4:1"}, 2},
                    UsageCase{{"params", "encode", "--light", "0:0:1:1.5"}, 2},
                    UsageCase{{"params", "encode", "--curve", "0,1"}, 2},
                    UsageCase{{"params", "encode", "--mode", "xyz"}, 2},
                    UsageCase{{"params", "encode", "--hue-set", "Teal"}, 2},
                    UsageCase{{"params", "encode", "--gamma", "0"}, 2},
                    UsageCase{{"params", "encode", "--hue-spread", "10"}, 2},
                    UsageCase{{"params", "encode", "--hue", "0:1:2:3", "--hue-set", "Red"}, 2},
                    UsageCase{{"params", "encode", "--params", "TOLM01"}, 2},
                    UsageCase{{"params", "encode", "--hue", "10:0:20:30"}, 2, "out of order"},
                    UsageCase{{"params", "encode", "--hue", "0:10:20:400"}, 2, "-360..360"},
                    UsageCase{{"params", "encode", "--hue", "0:1"}, 2, "params encode --help"},
                    UsageCase{{"params", "encode", "--target-hue", "east"}, 2},
                    UsageCase{{"params"}, 2}, UsageCase{{"params", "decode"}, 2},
                    UsageCase{{"params", "decode", "hello"}, 2},
                    UsageCase{{"params", "decode", "tolm0123"}, 2, "442 hexadecimal digits"},
                    UsageCase{{"params", "decode", "tolm"}, 2, "params decode --help"},
                    UsageCase{{"params", "decode", "-x"}, 2, "params decode --help"},
                    UsageCase{{"params", "decode", "--from", "/nonexistent/doc.tiff"}, 1}));

} // namespace
} // namespace tintorra::cliTest
