#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Fabric/InputError.h"
#include "Fabric/Limits.h"
#include "Fabric/Object.h"
#include "Fabric/Reader.h"

namespace Fabric {
namespace {

/// What reading complains of; empty when it does not.
std::string complaint(std::string_view text, std::string_view name = "f") {
  try {
    read(name, text);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

std::string complaintOfFile(const std::string& path) {
  try {
    readFile(path);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

std::string json(std::string_view text, std::string_view name = "f") {
  return toJson(read(name, text));
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  all.reserve(text.size() * count);
  for (std::size_t at = 0; at < count; ++at) {
    all += text;
  }
  return all;
}

/// A file that is gone with the test.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string_view text)
      : path_(std::filesystem::path(testing::TempDir()) /
              (std::string("reader-") +
               testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TemporaryFile() { std::filesystem::remove(path_); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

TEST(ReaderTest, PlainScalar_HasTheTypeOfTheCoreSchema) {
  EXPECT_EQ(json("[null, Null, ~, true, TRUE, False, yes, no, on]"),
            R"([null,null,null,true,true,false,"yes","no","on"])");
  EXPECT_EQ(json("[0, -7, +7, 010, 0o17, 0x1F, 1.5, .5, 5., 1e3, -1.5E-1]"),
            "[0,-7,7,10,15,31,1.5,0.5,5,1000,-0.15]");
  EXPECT_EQ(json("[1_000, 0b1, 0o8, 0x, 1e, e1, ., -, 1:30, 02:00:00:00:00:01, gen-1]"),
            R"(["1_000","0b1","0o8","0x","1e","e1",".","-","1:30","02:00:00:00:00:01","gen-1"])");
}

TEST(ReaderTest, QuotedScalar_IsAString) {
  EXPECT_EQ(json(R"(['1', "true", "", !!str 5, "null"])"), R"(["1","true","","5","null"])");
  EXPECT_EQ(json("a: |\n  1\nb: >-\n  true\n"), R"({"a":"1\n","b":"true"})");
}

TEST(ReaderTest, EscapesOfYaml_AreCharactersInUtf8) {
  const Value value = read("f", "{\"a\\N\": \"\u00e9\\N\\_\\L\\x85\\u0085\U0001f600\\_\"}");
  EXPECT_EQ(*value.object().begin()->key, "a\u0085");
  EXPECT_EQ(value.object().begin()->value.string(),
            "\u00e9\u0085\u00a0\u2028\u0085\u0085\U0001f600\u00a0");
}

TEST(ReaderTest, Key_IsTextAsWritten) {
  EXPECT_EQ(json("{3: a, true: b, 0x10: c, '1.0': d}"),
            R"({"3":"a","true":"b","0x10":"c","1.0":"d"})");
}

TEST(ReaderTest, NotFiniteNumber_IsRefused) {
  for (const char* number : {".inf", "-.inf", ".nan", "1e999", "-1e999"}) {
    EXPECT_EQ(complaint(std::string("a: ") + number),
              "f:1:4: not a finite number, expected one that a double can hold");
  }
  EXPECT_EQ(json("a: 1e-999"), R"({"a":0})");
}

TEST(ReaderTest, Place_CountsLinesAndCharactersFromOne) {
  const Value tree = read("f", "a: 1\nbé:\r\n  - x\n  - {\"é\": 2, c: 3}\n");
  EXPECT_EQ(tree.object().member("a")->mark, (Mark{1, 1}));
  EXPECT_EQ(tree.find("a")->mark(), (Mark{1, 4}));
  EXPECT_EQ(tree.object().member("bé")->mark, (Mark{2, 1}));
  const Value& last = tree.find("bé")->array().at(1);
  EXPECT_EQ(last.mark(), (Mark{4, 5}));
  EXPECT_EQ(last.object().member("c")->mark, (Mark{4, 14}));
  EXPECT_EQ(last.find("c")->mark(), (Mark{4, 17}));
}

TEST(ReaderTest, ValueThatIsNotWritten_IsNullInThePlaceOfItsKey) {
  const Value tree = read("f", "a:\nb: ~\n\nc:\n");
  EXPECT_EQ(toJson(tree), R"({"a":null,"b":null,"c":null})");
  EXPECT_EQ(tree.find("a")->mark(), (Mark{1, 1}));
  EXPECT_EQ(tree.find("b")->mark(), (Mark{2, 4}));
  EXPECT_EQ(tree.find("c")->mark(), (Mark{4, 1}));
}

TEST(ReaderTest, JsonPlace_CountsLinesAndCharactersFromOne) {
  const Value tree = read("f.json", "{\"é\": 1, \"b\":\n  [2, {\"c\": null}]}");
  EXPECT_EQ(tree.object().member("b")->mark, (Mark{1, 10}));
  EXPECT_EQ(tree.find("b")->mark(), (Mark{2, 3}));
  EXPECT_EQ(tree.find("b")->array().at(1).find("c")->mark(), (Mark{2, 13}));
}

TEST(ReaderTest, ByteOrderMark_IsSkipped) {
  EXPECT_EQ(json("\xef\xbb\xbf"
                 "a: 1"),
            R"({"a":1})");
  EXPECT_EQ(json("\xef\xbb\xbf{\"a\": 1}", "f.json"), R"({"a":1})");
}

TEST(ReaderTest, DuplicateKey_IsRefusedAtTheSecond) {
  const std::string expected =
      "duplicate key \"a\", expected each key once; the first is at line 1, column ";
  EXPECT_EQ(complaint("a: 1\nb: 2\na: 3\n"), "f:3:1: " + expected + "1");
  EXPECT_EQ(complaint("{a: 1, \"a\": 2}"), "f:1:8: " + expected + "2");
  EXPECT_EQ(complaint(R"({"a": 1, "\u0061": 2})", "f.json"), "f.json:1:10: " + expected + "2");
}

TEST(ReaderTest, Alias_SharesItsAnchorsValue) {
  const Value tree = read("f", "a: &x {b: [1, 2]}\nc: *x\nd: [*x]\n");
  EXPECT_EQ(toJson(tree), R"({"a":{"b":[1,2]},"c":{"b":[1,2]},"d":[{"b":[1,2]}]})");
  EXPECT_EQ(&tree.find("a")->object(), &tree.find("c")->object());
  EXPECT_EQ(tree.find("c")->mark(), (Mark{2, 4}));
}

TEST(ReaderTest, AliasBomb_IsRefusedWhereTheCountGoesOver) {
  std::string bomb = "a0: &a0 [x, x, x, x, x, x, x, x, x, x]\n";
  for (int level = 1; level < 40; ++level) {
    const std::string below = "*a" + std::to_string(level - 1);
    const std::string name = "a" + std::to_string(level);
    bomb += name + ": &" + name + " [" + below + repeated(", " + below, 9) + "]\n";
  }
  EXPECT_EQ(complaint(bomb),
            "f:7:20: too many values, expected at most 4000000 with each alias written out");
}

TEST(ReaderTest, AliasInItsOwnAnchor_IsRefused) {
  EXPECT_EQ(complaint("a: &x [1, *x]"),
            "f:1:11: alias of a key or of a value that contains it, expected one of a value before "
            "it");
}

TEST(ReaderTest, AliasesBeyondTheirLimit_AreRefused) {
  EXPECT_EQ(complaint("- &a 1\n" + repeated("- *a\n", kMaxAliases)), "");
  EXPECT_EQ(complaint("- &a 1\n" + repeated("- *a\n", kMaxAliases + 1)),
            "f:100002:3: too many aliases, expected at most 100000");
}

TEST(ReaderTest, AliasedDepth_CountsLikeWrittenDepth) {
  const std::string half = repeated("[", kMaxDepth / 2) + repeated("]", kMaxDepth / 2);
  const std::string atLimit =
      repeated("[", kMaxDepth / 2 - 1) + "*a" + repeated("]", kMaxDepth / 2 - 1);
  EXPECT_EQ(complaint("- &a " + half + "\n- " + atLimit), "");
  EXPECT_EQ(complaint("- &a " + half + "\n- [" + atLimit + "]"),
            "f:2:35: nested too deeply, expected at most 64 levels");
}

TEST(ReaderTest, Depth_IsAllowedUpToItsLimitInEachStyle) {
  const std::string open = repeated("[", kMaxDepth);
  const std::string close = repeated("]", kMaxDepth);
  const std::string deeper = "nested too deeply, expected at most 64 levels";
  EXPECT_EQ(complaint(open + close), "");
  EXPECT_EQ(complaint(open + close, "f.json"), "");
  EXPECT_EQ(complaint(repeated("- ", kMaxDepth) + "a"), "");
  EXPECT_EQ(complaint("[" + open + close + "]"), "f:1:65: " + deeper);
  EXPECT_EQ(complaint("[" + open + close + "]", "f.json"), "f.json:1:65: " + deeper);
  EXPECT_EQ(complaint(repeated("- ", kMaxDepth + 1) + "a"), "f:1:129: " + deeper);
}

TEST(ReaderTest, SixtyMegabytesOfNesting_AreRefusedAtTheFirstLevelTooDeep) {
  const std::string deeper = "nested too deeply, expected at most 64 levels";
  EXPECT_EQ(complaint(repeated("[", 60'000'000)), "f:1:65: " + deeper);
  EXPECT_EQ(complaint(repeated("[", 60'000'000), "f.json"), "f.json:1:65: " + deeper);
  EXPECT_EQ(complaint("x: " + repeated("{a: ", 15'000'000)), "f:1:260: " + deeper);
  EXPECT_EQ(complaint(repeated("- ", 30'000'000)), "f:1:129: " + deeper);
}

TEST(ReaderTest, NestingBehindWhatLooksLikeAQuote_IsRefusedToo) {
  EXPECT_EQ(complaint("- |\n  \"\n- " + repeated("[", 60'000'000)),
            "f:3:100003: nested too deeply, expected at most 64 levels");
}

TEST(ReaderTest, BracketsInTexts_AreNoNesting) {
  const std::string texts =
      repeated("- \"[[ \\\" [\"\n- '[[ '' ['\n- a [[[ # [[[\n- it's [\n", 1000);
  EXPECT_EQ(complaint(texts), "");
}

TEST(ReaderTest, HundredMegabytes_AreRefusedBySizeBeforeAnythingElse) {
  const TemporaryFile file("");
  std::filesystem::resize_file(file.path(), 100'000'000);
  EXPECT_EQ(complaintOfFile(file.path()),
            file.path() + ":1:1: too large, expected at most 67108864 bytes");
  EXPECT_EQ(complaint(std::string(kMaxBytes + 1, ' ')),
            "f:1:1: too large, expected at most 67108864 bytes");
}

TEST(ReaderTest, EndlessFile_IsRefusedBySize) {
  EXPECT_EQ(complaintOfFile("/dev/zero"),
            "/dev/zero:1:1: too large, expected at most 67108864 bytes");
}

TEST(ReaderTest, UnreadableFile_IsRefusedWithTheReason) {
  EXPECT_EQ(complaintOfFile("no/such.yaml"),
            "no/such.yaml:1:1: cannot be read: No such file or directory, expected a file");
  EXPECT_EQ(complaintOfFile(testing::TempDir()),
            testing::TempDir() + ":1:1: cannot be read: it is a directory, expected a file");
}

TEST(ReaderTest, File_IsReadWhole) {
  const std::string text = repeated("0123456789\n", 20'000);
  const TemporaryFile file(text);
  EXPECT_EQ(readFile(file.path()), text);
}

TEST(ReaderTest, EmptyText_IsRefused) {
  const std::string expected = "an empty document, expected an object; {} is one";
  EXPECT_EQ(complaint(""), "f:1:1: " + expected);
  EXPECT_EQ(complaint("# nothing\n\n"), "f:1:1: " + expected);
  EXPECT_EQ(complaint("", "f.json"),
            "f.json:1:1: broken JSON: the end of the text, expected a value");
}

TEST(ReaderTest, BytesThatAreNoText_AreRefusedWhereTheyStand) {
  const std::string expected =
      "a byte that is not part of a text, expected UTF-8 without control characters";
  EXPECT_EQ(complaint(std::string_view("a: \0", 4)), "f:1:4: " + expected);
  EXPECT_EQ(complaint("a: b\x04"), "f:1:5: " + expected);
  EXPECT_EQ(complaint("é: \xff"), "f:1:4: " + expected);
  EXPECT_EQ(complaint("a: \xc0\xaf"), "f:1:4: " + expected);
  EXPECT_EQ(complaint("a: \xed\xa0\x80"), "f:1:4: " + expected);
  EXPECT_EQ(complaint("a: \xf4\x90\x80\x80"), "f:1:4: " + expected);
  EXPECT_EQ(complaint("a: \xe2\x82"), "f:1:4: " + expected);
  EXPECT_EQ(complaint("\x7f"
                      "ELF\x02\x01\x01"),
            "f:1:5: " + expected);
  EXPECT_EQ(complaint("{\"a\": \"\x01\"}", "f.json"), "f.json:1:8: " + expected);
}

TEST(ReaderTest, SeveralDocuments_AreRefusedAtTheSecond) {
  EXPECT_EQ(complaint("a: 1\n---\nb: 2\n"),
            "f:2:1: more after the document, expected one document");
  EXPECT_EQ(complaint("---\na: 1\n...\n"), "");
}

TEST(ReaderTest, UnknownTag_IsRefused) {
  EXPECT_EQ(
      complaint("a: !switch b"),
      "f:1:4: unknown tag \"!switch\", expected none, or one of !!str, !!int, !!float, !!bool, "
      "!!null, !!map, !!seq");
  EXPECT_NE(complaint("a: !!binary aGk=").find("unknown tag"), std::string::npos);
  EXPECT_NE(complaint("a: !!set {b}").find("unknown tag"), std::string::npos);
  EXPECT_NE(complaint("a: !!seq {b: c}").find("unknown tag"), std::string::npos);
}

TEST(ReaderTest, CoreTag_HasToFitItsValue) {
  EXPECT_EQ(json("[!!int 5, !!float 1.5, !!bool true, !!null ~, !!seq [], !!map {}]"),
            "[5,1.5,true,null,[],{}]");
  EXPECT_EQ(complaint("a: !!int b"),
            "f:1:4: \"b\" is not of its tag's type, expected a value of !!int");
}

TEST(ReaderTest, KeyThatIsNoText_IsRefused) {
  EXPECT_EQ(complaint("[1]: a"), "f:1:1: a list or an object as a key, expected a text");
  EXPECT_EQ(complaint("? {a: b}\n: c"), "f:1:3: a list or an object as a key, expected a text");
  EXPECT_EQ(complaint("~: a"), "f:1:1: null as a key, expected a text; write it in quotes");
  EXPECT_EQ(complaint("a: &x b\n*x : c"), "f:2:1: an alias as a key, expected a text");
}

TEST(ReaderTest, BrokenYaml_IsRefusedWhereItBreaks) {
  EXPECT_EQ(complaint("a: [1, 2\nb: 3\n").substr(0, 21), "f:2:2: broken YAML: e");
  EXPECT_EQ(complaint("a: \"b").substr(0, 21), "f:1:6: broken YAML: i");
  EXPECT_EQ(complaint("a: *b").substr(0, 21), "f:1:4: broken YAML: t");
  EXPECT_EQ(complaint("a:\n\t- b").substr(0, 21), "f:2:2: broken YAML: i");
  EXPECT_EQ(complaint("a: b: c").substr(0, 21), "f:1:5: broken YAML: i");
}

TEST(ReaderTest, Json_IsReadWhole) {
  EXPECT_EQ(
      json(R"( {"a": [1, -2.5e1, 0, -0, true, false, null, {}, []], "b": "\"\\\/\b\f\n\r\t"} )",
           "f.json"),
      R"({"a":[1,-25,0,0,true,false,null,{},[]],"b":"\"\\/\u0008\u000c\n\u000d\t"})");
}

TEST(ReaderTest, JsonEscape_IsTheCharacterThatItNames) {
  EXPECT_EQ(read("f.json", R"(["\u0041\u00e9\u20ac\ud83d\ude00"])").array().at(0).string(),
            "A\u00e9\u20ac\U0001F600");
}

TEST(ReaderTest, HalfASurrogatePair_IsRefused) {
  const std::string expected =
      ": broken JSON: half a surrogate pair, expected both halves, the high one first";
  EXPECT_EQ(complaint(R"(["a\ud83d"])", "f.json"), "f.json:1:4" + expected);
  EXPECT_EQ(complaint(R"(["\ude00"])", "f.json"), "f.json:1:3" + expected);
  EXPECT_EQ(complaint(R"(["\ud83d\u0041"])", "f.json"), "f.json:1:3" + expected);
}

TEST(ReaderTest, JsonText_IsReadAsJsonWhateverItsName) {
  EXPECT_EQ(json(R"({"a": "\ud83d\ude00"})", "f.yaml"), "{\"a\":\"\U0001F600\"}");
  EXPECT_EQ(json("{a: b}", "f.yaml"), R"({"a":"b"})");
  EXPECT_NE(complaint("{a: b}", "f.json"), "");
}

TEST(ReaderTest, BrokenJson_IsRefusedWhereItBreaks) {
  const auto found = [](std::string_view text) { return complaint(text, "f.json"); };
  EXPECT_EQ(found("{\"a\" 1}"), "f.json:1:6: broken JSON: \"1\", expected \":\"");
  EXPECT_EQ(found("{\"a\": 1,}"),
            "f.json:1:9: broken JSON: \"}\", expected a key in double quotes");
  EXPECT_EQ(found("{\"a\": 1"),
            "f.json:1:8: broken JSON: the end of the text, expected \",\" or \"}\"");
  EXPECT_EQ(found("[1 2]"), "f.json:1:4: broken JSON: \"2\", expected \",\" or \"]\"");
  EXPECT_EQ(found("[01]"), "f.json:1:3: broken JSON: \"1\", expected \",\" or \"]\"");
  EXPECT_EQ(found("[1.]"), "f.json:1:4: broken JSON: \"]\", expected a digit");
  EXPECT_EQ(found("[1e]"), "f.json:1:4: broken JSON: \"]\", expected a digit");
  EXPECT_EQ(found("[+1]"), "f.json:1:2: broken JSON: \"+\", expected a value");
  EXPECT_EQ(found("[\u00e9]"), "f.json:1:2: broken JSON: \"\u00e9\", expected a value");
  EXPECT_EQ(found("[1 \U0001f600]"),
            "f.json:1:4: broken JSON: \"\U0001f600\", expected \",\" or \"]\"");
  EXPECT_EQ(found("[nul]"), "f.json:1:2: broken JSON: \"n\", expected a value");
  EXPECT_EQ(found("[\"a]"),
            "f.json:1:2: broken JSON: a string without an end, expected a closing quote");
  EXPECT_EQ(found("[\"a\nb\"]"),
            "f.json:1:4: broken JSON: \"\\n\", expected an escape in its place, or a closing quote "
            "before it");
  EXPECT_EQ(
      found("[\"\\x\"]"),
      "f.json:1:4: broken JSON: \"x\", expected one of \" \\ / b f n r t u after a backslash");
  EXPECT_EQ(found("[\"\\u12g4\"]"),
            "f.json:1:5: broken JSON: \"1\", expected four hexadecimal digits");
  EXPECT_EQ(found("{} {}"), "f.json:1:4: broken JSON: \"{\", expected nothing after the document");
}

TEST(ReaderTest, ValuesBeyondTheirLimit_AreRefused) {
  std::string text = "[0" + repeated(",0", kMaxNodes - 2);
  EXPECT_EQ(complaint(text + "]", "f.json"), "");
  EXPECT_EQ(complaint(text + ",0]", "f.json"),
            "f.json:1:8000000: too many values, expected at most 4000000 with each alias written "
            "out");
}

}  // namespace
}  // namespace Fabric
