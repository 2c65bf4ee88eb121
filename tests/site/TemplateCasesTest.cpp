// The engine's behaviour as a table: template, variables (JSON), expected
// output and the error codes reported, grouped by marker and filter.
//
// Dates are formatted in UTC with the en_US locale (TemplateTestSupport sets
// them for the process).

#include "TemplateTestSupport.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace sitetest;

namespace
{

struct Case {
    const char *name;
    const char *text;
    const char *variables; // JSON object, or "" for none
    const char *expected;
    std::vector<int> codes;
};

void PrintTo(const Case &c, std::ostream *os)
{
    *os << c.name;
}

class TemplateCase : public ::testing::TestWithParam<Case>
{
};

TEST_P(TemplateCase, ExpandsAsExpected)
{
    const Case &c = GetParam();
    auto engine = makeEngine();
    engine->setPluginRegistry(&testRegistry());
    const Outcome outcome = expand(*engine, QString::fromUtf8(c.text), variablesFromJson(c.variables));
    EXPECT_EQ(outcome.output.toStdString(), std::string(c.expected)) << "template: " << c.text;
    EXPECT_EQ(outcome.codes, c.codes) << "template: " << c.text;
}

std::string caseName(const ::testing::TestParamInfo<Case> &info)
{
    return info.param.name;
}

#define TEMPLATE_CASES(group, ...)                                                                           \
    const Case group##Cases[] = {__VA_ARGS__};                                                               \
    INSTANTIATE_TEST_SUITE_P(group, TemplateCase, ::testing::ValuesIn(group##Cases), caseName)

const char *const kPeople = R"({"name": "Ann", "items": ["a", "b", "c"],
    "post": {"title": "T"}, "posts": [{"title": "A"}, {"title": "B"}], "tags": ["a", "b"]})";

TEMPLATE_CASES(
    Text, Case{"PlainTextReturnsItself", "Just text, no markers.", "", "Just text, no markers.", {}},
    Case{"EmptyTemplate", "", "", "", {}},
    Case{"StrayDelimitersAreText", "50% off {% and {{ more } %", "", "50% off {% and {{ more } %", {}},
    Case{"BodyMayNotCrossALine", "{{ na\nme }}", kPeople, "{{ na\nme }}", {}},
    Case{"SpaceAroundBodyMaySpanLines", "{{\n  name\n}}", kPeople, "Ann", {}},
    Case{"NoSpaceNeeded", "{{name}}{%set x 1%}{{x}}", kPeople, "Ann1", {}},
    Case{"FirstEndDelimiterEndsMatchEvenInQuotes", R"({% set x "a%}b" %}[{{ x }}])", "", R"(b" %}["a])", {}},
    Case{"FirstBarEndsBodyEvenInQuotes", R"({% set x "a|b" %}[{{ x }}])", "", R"(["a])", {}},
    Case{"FirstStartDelimiterOwnsTheBody", "{{ a {{ name }}", kPeople, "", {3}});

TEMPLATE_CASES(
    Expression, Case{"Variable", "Hi {{ name }}!", kPeople, "Hi Ann!", {}},
    Case{"MissingPrintsNothingAndReports", "[{{ missing }}]", "", "[]", {3}},
    Case{"EmptyExpressionReports", "[{{ }}][{{}}]", "", "[][]", {3, 3}},
    Case{"EmptyQuotesAreNoName", R"([{{ "" }}])", "", "[]", {3}},
    Case{"QuotedName", R"({{ "name" }})", kPeople, "Ann", {}},
    Case{"FurtherWordsIgnored", "{{ name other words }}", kPeople, "Ann", {}},
    Case{"DottedPath", "{{ post.title }}", kPeople, "T", {}},
    Case{"NumericIndex", "{{ posts.0.title }},{{ posts.1.title }},{{ tags.1 }}", kPeople, "A,B,b", {}},
    Case{"IndexPastEnd", "[{{ posts.2.title }}]", kPeople, "[]", {3}},
    Case{"IndexMustBeginWithDigits",
         "[{{ posts.x }}][{{ posts.-1 }}]{{ tags.1st }}",
         kPeople,
         "[][]b",
         {3, 3}},
    Case{"KeyMappedOverList", "{{ posts.title }}", kPeople, R"(["A","B"])", {}},
    Case{"MappedKeyMissingInSomeElements", "{{ l.k }}", R"({"l": [{"k": 1}, {"j": 2}]})", "[1,null]", {}},
    Case{"CountAndLength", "{{ posts.@count }} {{ post.@count }} {{ name.length }}", kPeople, "2 1 3", {}},
    Case{"NumbersAndBooleans",
         "{{ i }} {{ f }} {{ big }} {{ t }} {{ n }} {{ whole }}",
         R"({"i": 42, "f": 2.5, "big": 1e20, "t": true, "n": -7, "whole": 3.0})",
         "42 2.5 1e+20 1 -7 3",
         {}},
    Case{"TruthGlobals", "{{ true }}{{ YES }}{{ yes }}{{ false }}{{ NO }}{{ no }}", "", "111000", {}},
    Case{"RunVariablesComeBeforeGlobals", "{{ true }}", R"({"true": "mine"})", "mine", {}},
    Case{"EngineGlobal",
         "{{ engine.delimiters.markerStart }} {{ engine.delimiters.expressionEnd }}",
         "",
         "{% }}",
         {}},
    Case{"ListPrintsAsJson",
         "{{ l }}",
         R"({"l": [1, "a", null, true, 2.5, {"k": "v"}]})",
         R"([1,"a",null,true,2.5,{"k":"v"}])",
         {}},
    Case{"MapPrintsWithSortedKeys", "{{ m }}", R"({"m": {"b": 1, "a": "x/y"}})", R"({"a":"x\/y","b":1})", {}},
    Case{"JsonEscapes", "{{ l }}", R"({"l": ["q\"b\\s\n\t\u0001"]})", R"(["q\"b\\s\n\t\u0001"])", {}},
    Case{"UnserializableListPrintsEmptyList",
         "{{ l }}",
         R"({"l": [1, {"$date": "2020-01-02T03:04:05Z"}]})",
         "[]",
         {}},
    Case{"DateTextForm",
         "{{ d }} {{ e }}",
         R"({"d": {"$date": "2020-01-02T03:04:05Z"}, "e": {"$date": "2020-01-02T03:04:05.250Z"}})",
         "2020-01-02T03:04:05Z 2020-01-02T03:04:05.250Z",
         {}},
    Case{"ColourTextForm",
         "{{ c }} {{ t }}",
         R"({"c": {"$color": "#ff8000"}, "t": {"$color": "#ff800080"}})",
         "#ff8000 #ff800080",
         {}});

TEMPLATE_CASES(
    Literal,
    Case{"KeepsMarkersAndExpressions",
         "{% literal %}{{ x }} {% if %}{% /literal %}",
         "",
         "{{ x }} {% if %}",
         {}},
    Case{"NestedLiteralPrintsItsOwnText",
         "{% literal %}a{% literal %}b{% /literal %}c{% /literal %}",
         "",
         "a{% literal %}bc",
         {}},
    Case{"StrayEndIsSilent", "a{% /literal %}b", "", "ab", {}},
    Case{"ExpressionNamedLiteralSwitchesToo", "{{ literal }}{{ x }}{{ /literal }}", "", "{{ x }}", {}},
    Case{"UnclosedRunsToTheEnd", "{% literal %}{{ x }}", "", "{{ x }}", {}},
    Case{"MarkersRunInsideLiteralWhileOutputIsOff",
         "{% if no %}{% literal %}{% /if %}x{% /literal %}y",
         "",
         "xy",
         {}});

TEMPLATE_CASES(
    For, Case{"Iterates", "{% for x in items %}[{{ x }}]{% /for %}", kPeople, "[a][b][c]", {}},
    Case{"LoopRecord",
         "{% for x in items %}{{ currentLoop.currentIndex }}/{{ currentLoop.startIndex }}/"
         "{{ currentLoop.endIndex }}/{{ currentLoop.reversed }} {% /for %}",
         kPeople,
         "0/0/3/0 1/0/3/0 2/0/3/0 ",
         {}},
    Case{"ReversedCountsDownFromCount",
         "{% for x in items reversed %}{{ currentLoop.currentIndex }}{{ x }} {% /for %}",
         kPeople,
         "3c 2b 1a ",
         {}},
    Case{"ReversedOnlyAsFourthOfFour",
         "{% for x in items reversed too %}{{ x }}{% /for %}",
         kPeople,
         "abc",
         {}},
    Case{
        "MapIteratesItsKeys", "{% for k in m %}{{ k }},{% /for %}", R"({"m": {"b": 2, "a": 1}})", "a,b,", {}},
    Case{"Counts", "{% for 1 to 3 %}{{ currentLoop.currentIndex }}{% /for %}", "", "123", {}},
    Case{"CountsBackwards",
         "{% for 1 to 3 reversed %}{{ currentLoop.currentIndex }}{% /for %}",
         "",
         "321",
         {}},
    Case{"AnySecondWordCounts",
         "{% for 2 through 4 %}{{ currentLoop.currentIndex }}{% /for %}",
         "",
         "234",
         {}},
    Case{"CountsBetweenVariables",
         "{% for lo to hi %}{{ currentLoop.currentIndex }}{% /for %}",
         R"({"lo": "2", "hi": 4})",
         "234",
         {}},
    Case{"CountsOnce", "{% for 0 to 0 %}{{ currentLoop.currentIndex }}{% /for %}", "", "0", {}},
    Case{"StartAboveEndNeverRuns", "{% for 3 to 1 %}x{% /for %}after", "", "after", {}},
    Case{"NonNumericBoundsNeverRun", "{% for a to b %}x{% /for %}after", "", "after", {}},
    Case{"EmptyListNeverRuns", "{% for x in none %}{{ x }}{% /for %}after", R"({"none": []})", "after", {}},
    Case{"MissingListNeverRuns", "{% for x in nothing %}{{ x }}{% /for %}after", "", "after", {}},
    Case{"TextIsNoCollection", "{% for x in name %}x{% /for %}after", kPeople, "after", {}},
    Case{"TooFewArgumentsStartNoBlock", "{% for x in %}A{% /for %}B", kPeople, "A", {1}},
    Case{"NestedLoopsSeeParentLoop",
         "{% for a in outer %}{% for b in inner %}{{ currentLoop.parentLoop.currentIndex }}"
         "{{ currentLoop.currentIndex }} {% /for %}{% /for %}",
         R"({"outer": [1, 2], "inner": ["x", "y"]})",
         "00 01 10 11 ",
         {}},
    Case{"ParentLoopThroughAnIf",
         "{% for a in outer %}{% if yes %}{% for b in inner %}{{ currentLoop.parentLoop.currentIndex }}"
         "{% /for %}{% /if %}{% /for %}",
         R"({"outer": [1, 2], "inner": ["x", "y"]})",
         "0011",
         {}},
    Case{"NoParentLoopAtTop",
         "{% for x in items %}{% if currentLoop.parentLoop %}P{% /if %}{% /for %}.",
         kPeople,
         ".",
         {}},
    Case{"InnerLoopVariableShadowsOuter",
         "{% for x in outer %}{% for x in inner %}{{ x }}{% /for %}{{ x }};{% /for %}",
         R"({"outer": [1, 2], "inner": ["x", "y"]})",
         "xy1;xy2;",
         {}},
    Case{"RunVariableShadowsLoopVariable",
         "{% for x in items %}{{ x }},{% /for %}{{ x }}",
         R"({"x": "run", "items": ["a", "b", "c"]})",
         "run,b,c,c",
         {}},
    Case{"NeverRunningLoopKeepsFalseIfSilent",
         "{% if no %}{% for x in nothing %}{% /for %}hidden{% /if %}shown",
         "",
         "shown",
         {}},
    Case{"RunningLoopInsideFalseIfIsSilent",
         "{% if no %}{% for x in items %}{{ x }}{% /for %}{% /if %}done",
         kPeople,
         "done",
         {}},
    Case{"AssigningCurrentIndexCantKeepLoopGoing",
         "{% for 1 to 3 %}{% set currentLoop.currentIndex 99 %}{{ currentLoop.currentIndex }},{% /for %}",
         "",
         "99,99,99,",
         {}},
    Case{"WrongEndStopsTheRun", "{% for x in items %}a{% /if %}b{% /for %}", kPeople, "a", {1}},
    Case{"UnclosedLoopReports", "{% for x in items %}{{ x }}", kPeople, "a", {6}});

// Each operator over the same variables: T when the condition holds.
#define IF_CASE(name, condition, expected)                                                                   \
    Case                                                                                                     \
    {                                                                                                        \
        name, "{% if " condition " %}T{% else %}F{% /if %}",                                                 \
            R"({"one": 1, "two": 2, "zero": 0, "s": "x", "t": "y", "text": "hello", "big": "12abc"})",       \
            expected,                                                                                        \
        {                                                                                                    \
        }                                                                                                    \
    }

TEMPLATE_CASES(
    If, Case{"True", "{% if a %}A{% else %}B{% /if %}", R"({"a": "x"})", "A", {}},
    Case{"MissingIsFalse", "{% if a %}A{% else %}B{% /if %}", "", "B", {}},
    Case{"ZeroIsFalse", "{% if a %}A{% else %}B{% /if %}", R"({"a": 0})", "B", {}},
    Case{"FalseIsFalse", "{% if a %}A{% else %}B{% /if %}", R"({"a": false})", "B", {}},
    Case{"EmptyTextIsTrue", "{% if a %}A{% else %}B{% /if %}", R"({"a": ""})", "A", {}},
    Case{"TextZeroIsTrue", "{% if a %}A{% else %}B{% /if %}", R"({"a": "0"})", "A", {}},
    Case{"EmptyListIsTrue", "{% if a %}A{% else %}B{% /if %}", R"({"a": []})", "A", {}},
    Case{"LiteralIsAVariableName", "{% if 1 %}A{% else %}B{% /if %}", "", "B", {}},
    Case{"GlobalsMakeWordsWork", "{% if true %}A{% /if %}{% if NO %}B{% /if %}", "", "A", {}},
    Case{"IfNotStartsNoBlock", "{% if not a %}A{% /if %}B", R"({"a": "x"})", "A", {1}},
    Case{"NoArgumentsStartNoBlock", "{% if %}A{% /if %}", "", "A", {1}},
    Case{"SecondElseDoesNothing", "{% if no %}A{% else %}B{% else %}C{% /if %}", "", "BC", {}},
    Case{"ElseOutsideIfDoesNothing", "a{% else %}b", "", "ab", {}},
    Case{"FalseOuterHidesInner",
         "{% if no %}{% if yes %}A{% else %}B{% /if %}C{% else %}D{% /if %}",
         "",
         "D",
         {}},
    Case{"FalseInner", "{% if yes %}{% if no %}A{% else %}B{% /if %}C{% /if %}", "", "BC", {}},
    Case{"MissingVariableIsSilentInFalseBranch", "{% if no %}{{ missing }}{% /if %}ok", "", "ok", {}},
    IF_CASE("And", "one and two", "T"), IF_CASE("AndFalse", "one and zero", "F"),
    IF_CASE("AndSymbol", "one && missing", "F"), IF_CASE("AndUpperCase", "one AND two", "T"),
    IF_CASE("Or", "zero or one", "T"), IF_CASE("OrSymbol", "zero || missing", "F"),
    IF_CASE("Equal", "one == 1", "T"), IF_CASE("EqualSingle", "one = two", "F"),
    IF_CASE("TextsResolvingBothCompareEqual", "s == t", "T"),
    IF_CASE("TextAgainstMissing", "s == missing", "F"), IF_CASE("NotEqual", "one != two", "T"),
    IF_CASE("NotEqualAngles", "one <> 1", "F"), IF_CASE("Greater", "two > one", "T"),
    IF_CASE("NotGreater", "one > two", "F"), IF_CASE("Less", "one < two", "T"),
    IF_CASE("GreaterOrEqual", "two >= 2", "T"), IF_CASE("LessOrEqual", "one <= 0", "F"),
    IF_CASE("NegativeLiteral", "-3 < one", "T"), IF_CASE("PrefixDigitsOfVariable", "big == 12", "T"),
    IF_CASE("PrefixDigitsOfLiteral", "12abc == 12", "T"), IF_CASE("FractionCutToInteger", "one == 1.9", "T"),
    IF_CASE("Remainder", "7 % 2", "T"), IF_CASE("NoRemainder", "4 % 2", "F"),
    IF_CASE("ZeroDivisor", "5 % 0", "F"), IF_CASE("ZeroDivisorVariable", "5 % zero", "F"),
    IF_CASE("NegativeRemainder", "-7 % 3", "F"),
    IF_CASE("SmallestByMinusOne", "-9223372036854775808 % -1", "F"),
    IF_CASE("EqualsString", "text equalsstring hello", "T"),
    IF_CASE("NotEqualsString", "text notequalsstring hello", "F"),
    IF_CASE("EqualsStringLiterally", "missing equalsstring missing", "T"),
    IF_CASE("OperatorIsLowerCased", "s EqualsString x", "T"), IF_CASE("UnknownOperator", "one xor two", "F"));

TEMPLATE_CASES(
    Section, Case{"Groups", "{% section main %}x{% /section %}y", "", "xy", {}},
    Case{"NoNameStartsNoBlock", "{% section %}x{% /section %}y", "", "x", {1}},
    Case{"TwoNamesStartNoBlock", "{% section a b %}x{% /section %}y", "", "x", {1}},
    Case{"SetLivesInSection", "{% section s %}{% set x 1 %}{{ x }}{% /section %}[{{ x }}]", "", "1[]", {3}},
    Case{"InsideLoop",
         "{% for x in items %}{% section s %}{{ x }}{% /section %}{% /for %}",
         kPeople,
         "abc",
         {}},
    Case{"CantCloseLoop", "{% for x in items %}{% /section %}", kPeople, "", {1}});

TEMPLATE_CASES(
    Comment, Case{"Hides", "a{% comment %}hidden {{ missing }}{% /comment %}b", "", "ab", {}},
    Case{"UnknownMarkerStillReported", "{% comment %}{% nosuch %}{% /comment %}.", "", ".", {2}},
    Case{"WithArgumentsStartsNoBlock", "{% comment note %}x{% /comment %}y", "", "x", {1}},
    Case{"InsideFalseIf", "{% if no %}{% comment %}{% /comment %}x{% /if %}y", "", "y", {}},
    Case{
        "HidesLoops", "{% comment %}{% for x in items %}{{ x }}{% /for %}{% /comment %}.", kPeople, ".", {}});

TEMPLATE_CASES(Set, Case{"SetsText", "{% set x 5 %}{{ x }}", "", "5", {}},
               Case{"ValueIsTakenAsWritten", "{% set x name %}{{ x }}", kPeople, "name", {}},
               Case{"QuotedValue", R"({% set x "two words" %}{{ x }})", "", "two words", {}},
               Case{"OtherCountsIgnored", "{% set x %}{% set x 1 2 %}[{{ x }}]", "", "[]", {3}},
               Case{"IgnoredWhileOutputIsOff", "{% if no %}{% set x 1 %}{% /if %}[{{ x }}]", "", "[]", {3}},
               Case{"Reassigns", "{% set x 1 %}{% set x 2 %}{{ x }}", "", "2", {}},
               Case{"InsideLoopEndsWithLoop",
                    "{% for i in items %}{% set y v %}{{ y }}{% /for %}[{{ y }}]",
                    kPeople,
                    "vvv[]",
                    {3}},
               Case{"InsideLoopAssignsOuterHolder",
                    "{% for i in items %}{% set y inner %}{% /for %}{{ y }}",
                    R"({"y": "outer", "items": [1, 2]})",
                    "inner",
                    {}},
               Case{"InsideIfEndsWithIf", "{% if yes %}{% set x 1 %}{% /if %}[{{ x }}]", "", "[]", {3}},
               Case{"IntoMapKey", "{% set post.title b %}{{ post.title }}", kPeople, "b", {}},
               Case{"IntoListElement", "{% set tags.1 z %}{{ tags }}", kPeople, R"(["a","z"])", {}},
               Case{"NewDottedNameIsStoredWhole", "{% set a.b 1 %}[{{ a.b }}]", "", "[]", {3}},
               Case{"UsableInConditions", "{% set n 3 %}{% if n > 2 %}big{% /if %}", "", "big", {}});

TEMPLATE_CASES(
    Cycle,
    Case{
        "StepsEachPass", "{% for x in items %}{% cycle odd even %} {% /for %}", kPeople, "odd even odd ", {}},
    Case{"EachCycleHasItsState",
         "{% for x in items %}{% cycle a b %}{% cycle 1 2 3 %} {% /for %}",
         kPeople,
         "a1 b2 a3 ",
         {}},
    Case{"EqualMarkersAreSeparate", "{% cycle a b %}{% cycle a b %}", "", "aa", {}},
    Case{"NoArgumentsPrintNothing", "[{% cycle %}]", "", "[]", {}},
    Case{"StepsWhileOutputIsOff",
         "{% for x in items %}{% if currentLoop.currentIndex == 1 %}{% else %}{% cycle a b c %}{% /if %}{% "
         "/for %}",
         kPeople,
         "ac",
         {}},
    Case{"ThroughFilter", "{% cycle abc | uppercase %}", "", "ABC", {}});

TEMPLATE_CASES(
    Load, Case{"UnknownClassIgnored", "{% load NoSuchClass %}ok", "", "ok", {}},
    Case{"FilterFromThenOn",
         "{{ name | reverse }} {% load TestFilters %}{{ name | reverse }}",
         kPeople,
         "Ann nnA",
         {}},
    Case{"Marker", "{% load TestMarkers %}{% shout %}", "", "HEY", {}},
    Case{"MarkerUnknownBeforeLoad", "{% shout %}{% load TestMarkers %}", "", "", {2}},
    Case{"TakenNamesKeepTheirHandler",
         "{% load TestMarkers %}{% for x in items %}{{ x }}{% /for %}",
         kPeople,
         "abc",
         {}},
    Case{"FilterPreferredOverMarker",
         "{% load TestBoth %}{{ name | twice }}{% twice %}",
         kPeople,
         "AnnAnn",
         {2}},
    Case{"SeveralClasses", "{% load TestFilters TestMarkers %}{% shout | reverse %}", "", "YEH", {}});

TEMPLATE_CASES(Errors, Case{"BlockBeganAndEnded", "{% load TestMarkers %}a{% both %}b", "", "ab", {0}},
               Case{"EndWithoutBlockStops", "a{% /for %}b{{ missing }}", "", "a", {1}},
               Case{"EndOfAnotherBlockStops", "{% if yes %}a{% /for %}b", "", "a", {1}},
               Case{"UnknownMarkerGoesOn", "a{% nosuch %}b", "", "ab", {2}},
               Case{"UnknownMarkerInSilence", "{% if no %}{% nosuch %}{% /if %}.", "", ".", {2}},
               Case{"EachMissingVariable", "{{ a }}{{ b }}c", "", "c", {3, 3}},
               Case{"BlockWithoutEndMarkers", "{% load TestMarkers %}a{% noend %}b", "", "ab", {4}},
               Case{"InvalidResumeRangeStops", "{% load TestMarkers %}a{% jump %}b", "", "a", {5}},
               Case{"OneBlockLeftOpen", "{% if yes %}a", "", "a", {6}},
               Case{"BlocksLeftOpen", "{% for x in items %}{% if yes %}", kPeople, "", {6}});

const char *const kDates = R"({"d": {"$date": "2020-01-02T03:04:05Z"}, "name": "Ann", "i": 42,
    "c": {"$color": "#ff8000"}, "l": ["a", "b/c"], "w": "straße", "p": "hello wORLD foo-bar  don't",
    "u": "élan ǆungla"})";

TEMPLATE_CASES(
    Filter, Case{"Uppercase", "{{ name | uppercase }} {{ w | uppercase }}", kDates, "ANN STRASSE", {}},
    Case{"Lowercase", "{{ name | lowercase }}", kDates, "ann", {}},
    Case{"Capitalized", "{{ p | capitalized }}", kDates, "Hello World Foo-bar  Don't", {}},
    Case{"CapitalizedBeyondAscii", "{{ u | capitalized }}", kDates, "Élan ǅungla", {}},
    Case{"NumberTextForm", "{{ i | uppercase }}", kDates, "42", {}},
    Case{"ListBecomesText", "{{ l | uppercase }}", kDates, R"(["A","B\/C"])", {}},
    Case{"UnknownFilterLeavesValue", "{{ name | nosuch }}", kDates, "Ann", {}},
    Case{"NoSpaceAroundBar", "{{name|uppercase}}", kDates, "ANN", {}},
    Case{"MissingValueSkipsFilter", "[{{ missing | uppercase }}]", kDates, "[]", {3}},
    Case{"DateFormat", R"({{ d | date_format: "yyyy-MM-dd HH:mm:ss" }})", kDates, "2020-01-02 03:04:05", {}},
    Case{"DateFormatNamesAndQuotes",
         R"({{ d | date_format: "EEE, d MMM yyyy 'at' h a" }})",
         kDates,
         "Thu, 2 Jan 2020 at 3 AM",
         {}},
    Case{"DateFormatSingleQuoted", "{{ d | date_format: 'yyyy' }}", kDates, "2020", {}},
    Case{"WithoutColonThePatternLosesItsColon", R"({{ d | date_format "HH:mm" }})", kDates, "03 04", {}},
    Case{"DateFormatLeavesTextAlone", R"({{ name | date_format: "yyyy" }})", kDates, "Ann", {}},
    Case{"DateFormatNeedsOneArgument",
         R"({{ d | date_format: "yyyy" "MM" }} {{ d | date_format }})",
         kDates,
         "2020-01-02T03:04:05Z 2020-01-02T03:04:05Z",
         {}},
    Case{"ColorFormat",
         R"({{ c | color_format: "hex" }} {{ c | color_format: HEX }})",
         kDates,
         "ff8000 ff8000",
         {}},
    Case{"ColorFormatOtherArgument", "{{ c | color_format: rgb }}", kDates, "#ff8000", {}},
    Case{"ColorFormatLeavesTextAlone", "{{ name | color_format: hex }}", kDates, "Ann", {}});

} // namespace
