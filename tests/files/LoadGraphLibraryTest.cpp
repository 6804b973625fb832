// loadGraphLibrary: the outer form of a file, the three passes and what each can see,
// partial texts, and the one line written for each refused file.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "mat/INodeClass.h"
#include "mat/IParameter.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "mat/IValue.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::WideErrorCapture;
using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::saveLibrary;
using test::files::withUUIDs;

struct BadFile {
  const char* why;
  const char* text;  // UUID tokens are expanded
  const wchar_t* errorLine;
};

const BadFile badFiles[] = {
    {"item without content", R"([{"uuid":"$t1"}])",
     L"InputFileParsingException: Value not found in object\n"},
    {"item without uuid", R"([{"content":"type"}])",
     L"InputFileParsingException: Value not found in object\n"},
    {"content not a string", R"([{"content":1,"uuid":"$t1"}])",
     L"InputFileParsingException: Value not found in object\n"},
    {"uuid not a string", R"([{"content":"type","uuid":null}])",
     L"InputFileParsingException: Value not found in object\n"},
    {"kind in the wrong case", R"([{"content":"Type","uuid":"$t1"}])",
     L"InputFileParsingException: Object with unknown type encountered\n"},
    {"unknown kind after good items",
     R"([{"content":"type","uuid":"$t1"},{"content":"graphs","uuid":"$g1"}])",
     L"InputFileParsingException: Object with unknown type encountered\n"},
    {"content element not an object", R"([{"content":"type","uuid":"$t1"},5])",
     L"InputFileParsingException: Expected object\n"},
    {"content element null in the versioned form", R"([{"fileversion":1},[null]])",
     L"InputFileParsingException: Expected object\n"},
    {"element reader refuses its item", R"([{"content":"type","uuid":"$t1","desc":5}])",
     L"InputFileParsingException: Invalid type for desc\n"},
    {"value reader refuses a default",
     R"([{"content":"type","uuid":"$t1","default":{"component":"colour","value":1}}])",
     L"InputFileParsingException: Value has no valid component!\n"},
    {"three elements, the first a header", R"([{"fileversion":1},[],[]])",
     L"InputFileParsingException: Value not found in object\n"},
    {"header and an object instead of the content array",
     R"([{"fileversion":1},{"content":"type","uuid":"$t1"}])",
     L"InputFileParsingException: Value not found in object\n"},
    {"graph without uuid fails in pass 1, before the graph before it is built",
     R"([{"content":"graph","uuid":"$g1","desc":5},{"content":"graph"}])",
     L"InputFileParsingException: Value not found in object\n"},
};

TEST(LoadGraphLibrary, RefusesBadFilesWithOneExactLine) {
  for (const BadFile& file : badFiles) {
    SCOPED_TRACE(file.why);
    const std::string text = withUUIDs(file.text);
    WideErrorCapture errors;
    const IGraphLibrary* library = nullptr;
    EXPECT_NO_THROW(library = loadGraphLibrary(text.c_str(), text.size(), nullptr, "t"));
    EXPECT_EQ(library, nullptr);
    releaseGraphLibrary(library);
    EXPECT_EQ(errors.text(), file.errorLine);
  }
}

TEST(LoadGraphLibrary, TextThatIsNoArrayGivesNullAndWritesNothing) {
  const char* const texts[] = {"",     " ",         "x",    "{}", R"({"a":[]})", "5",
                               "null", R"("text")", "true", "]",  "{[]}",        "\xef\xbb\xbf[]"};
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    WideErrorCapture errors;
    EXPECT_EQ(loadLibrary(text), nullptr);
    EXPECT_EQ(errors.text(), L"");
  }
}

// Texts that load, silently, to the library that another text loads to: the outer forms,
// headers, and whatever follows the root array or a NUL.
struct SameLibrary {
  std::string why;
  std::string text;
  std::string sameAs;
};

std::vector<SameLibrary> sameLibraries() {
  const std::string emptyContent = R"([{"fileversion":1},[]])";
  const std::string type = withUUIDs(R"({"content":"type","uuid":"$t1","desc":"float"})");
  const std::string sample = test::files::sampleLibraryText();
  std::vector<SameLibrary> rows = {
      {"bare array", "[]", emptyContent},
      {"bare array with blanks", " [ ] ", emptyContent},
      {"header with datasources", R"([{"fileversion":1,"datasources":[]},[]])", emptyContent},
      {"empty header", R"([{},[]])", emptyContent},
      {"header without fileversion: content not read", R"([{"datasources":[]},[)" + type + "]]",
       emptyContent},
      {"header without fileversion: not even bad content",
       R"([{"datasources":[]},[5,{"content":"Type"},{"uuid":7}]])", emptyContent},
      {"fileversion in the wrong case", R"([{"FileVersion":1},[{"content":"type"}]])",
       emptyContent},
      {"NUL ends the text though the size counts what follows", sample + std::string("\0[5]", 4),
       sample},
  };
  for (const char* version : {"1", "2", "0", "-1.5", R"("x")", "null", "true", "{}", "[]"}) {
    rows.push_back({std::string("fileversion ") + version,
                    R"([{"fileversion":)" + std::string(version) + "},[" + type + "]]",
                    "[" + type + "]"});
  }
  for (const char* tail : {" ", "\n]]]", "garbage", R"([{"content":"Type"}])", "{"}) {
    rows.push_back({std::string("text after the root array: ") + tail, sample + tail, sample});
  }
  return rows;
}

TEST(LoadGraphLibrary, TextsThatLoadAsAnotherTextDoes) {
  for (const SameLibrary& row : sameLibraries()) {
    SCOPED_TRACE(row.why);
    WideErrorCapture errors;
    const LibraryHandle library = loadLibrary(row.text);
    const LibraryHandle expected = loadLibrary(row.sameAs);
    ASSERT_NE(library, nullptr);
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(saveLibrary(*library), saveLibrary(*expected));
    EXPECT_EQ(errors.text(), L"");
  }
}

TEST(LoadGraphLibrary, LibraryHasTheNameGivenOrTheEmptyName) {
  EXPECT_STREQ(loadLibrary("[]", nullptr, "materials")->GetName(), "materials");
  const IGraphLibrary* unnamed = loadGraphLibrary("[]", 2, nullptr, nullptr);
  ASSERT_NE(unnamed, nullptr);
  EXPECT_STREQ(unnamed->GetName(), "");
  releaseGraphLibrary(unnamed);
}

// Pass 1 registers each type, semantic and node class as soon as it is built; graphs come
// in pass 2 and their connections in pass 3, once every object of the file exists.
TEST(LoadGraphLibrary, EachPassSeesWhatTheOnesBeforeItBuilt) {
  const LibraryHandle library = loadLibrary(withUUIDs(R"([
      {"content":"semantic","uuid":"$s1","desc":"early","type":"$t1"},
      {"content":"nodeclass","uuid":"$c1","desc":"early","input":[{"name":"in","type":"$t1"}]},
      {"content":"graph","uuid":"$g1","desc":"user","nodes":[{"uuid":"$n1","node":"$g2"}]},
      {"content":"type","uuid":"$t1","desc":"float",
       "default":{"component":"semantic","value":"$s2"}},
      {"content":"semantic","uuid":"$s2","desc":"late","type":"$t1"},
      {"content":"nodeclass","uuid":"$c2","desc":"late","input":[{"name":"in","type":"$t1"}]},
      {"content":"graph","uuid":"$g2","desc":"used","input":[{"name":"in","type":"$t1"}]}])"));
  ASSERT_NE(library, nullptr);
  const IType* type = library->GetType(0);
  EXPECT_EQ(library->FindSemanticByName("early")->GetType(), nullptr);
  EXPECT_EQ(library->FindNodeClassByName("early")->GetInput(0)->GetType(), nullptr);
  EXPECT_EQ(type->GetDefault()->GetSemantic(0), nullptr);
  EXPECT_EQ(library->FindSemanticByName("late")->GetType(), type);
  EXPECT_EQ(library->FindNodeClassByName("late")->GetInput(0)->GetType(), type);
  EXPECT_EQ(library->FindGraphByName("used")->GetInput(0)->GetType(), type);
  const auto user = library->FindGraphByName("user");
  EXPECT_EQ(user->GetNode(2)->GetNodeClass(), library->FindGraphByName("used"));
  EXPECT_EQ(user->GetNode(2)->GetNodeKind(), NestedGraphNode);
}

// Which object a lookup finds is the library's rule; here, that the loader registers both
// objects and that references read after them resolve to the later one.
TEST(LoadGraphLibrary, LaterItemWithTheSameUUIDTakesOverLookupsAndBothStay) {
  const LibraryHandle library = loadLibrary(withUUIDs(R"([
      {"content":"type","uuid":"$t1","desc":"first"},
      {"content":"type","uuid":"$t1","desc":"second"},
      {"content":"semantic","uuid":"$s1","desc":"first","type":"$t1"},
      {"content":"semantic","uuid":"$s1","desc":"second","type":"$t1"},
      {"content":"nodeclass","uuid":"$c1","desc":"first"},
      {"content":"nodeclass","uuid":"$c1","desc":"second"},
      {"content":"graph","uuid":"$g1","desc":"first","nodes":[{"uuid":"$n1","node":"$c1"}]},
      {"content":"graph","uuid":"$g1","desc":"second"}])"));
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(library->GetTypeCount(), 2u);
  EXPECT_EQ(library->GetSemanticCount(), 2u);
  EXPECT_EQ(library->GetNodeClassCount(), 2u);
  EXPECT_EQ(library->GetGraphCount(), 2u);
  EXPECT_EQ(library->GetSemantic(0)->GetType(), library->GetType(1));
  EXPECT_EQ(library->GetGraph(0)->GetNode(2)->GetNodeClass(), library->GetNodeClass(1));
  // Both objects of each kind are written, in their order.
  const LibraryHandle reloaded = loadLibrary(saveLibrary(*library));
  ASSERT_NE(reloaded, nullptr);
  EXPECT_STREQ(reloaded->GetGraph(0)->GetName(), "first");
  EXPECT_STREQ(reloaded->GetGraph(1)->GetName(), "second");
  EXPECT_EQ(saveLibrary(*reloaded), saveLibrary(*library));
}

TEST(LoadGraphLibrary, NulInsideTheTextCutsItThere) {
  // The bytes after the NUL would complete the second type; without them the parser
  // stops inside its object and keeps what it read: "content" and "uuid".
  const std::string text =
      withUUIDs(R"([{"content":"type","uuid":"$t1"},{"content":"type","uuid":"$t2")") +
      std::string("\0,\"desc\":5}]", 12);
  WideErrorCapture errors;
  const IGraphLibrary* library = loadGraphLibrary(text.data(), text.size(), nullptr, "t");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(library->GetTypeCount(), 2u);
  EXPECT_EQ(errors.text(), L"");
  releaseGraphLibrary(library);
}

struct PartialText {
  const char* why;
  const char* text;
  size_t typeCount;          // when it loads
  const wchar_t* errorLine;  // when it does not
};

// A syntax error inside the root array leaves what the parser had built: the elements
// before it and, for an object it was inside, the members read so far.
const PartialText partialTexts[] = {
    {"only the opening bracket", "[", 0, L"InputFileParsingException: Expected object\n"},
    {"error between items", R"([{"content":"type","uuid":"$t1"} x {"content":"type"}])", 1,
     nullptr},
    {"cut after a comma", R"([{"content":"type","uuid":"$t1"},)", 0,
     L"InputFileParsingException: Expected object\n"},
    {"cut inside an item after its uuid", R"([{"content":"type","uuid":"$t1")", 1, nullptr},
    {"cut inside an item where a key belongs", R"([{"content":"type","uuid":"$t1",)", 1, nullptr},
    {"cut where a member value belongs", R"([{"content":"type","uuid":"$t1","desc":)", 0,
     L"InputFileParsingException: Invalid type for desc\n"},
    {"cut inside an item before its uuid", R"([{"content":"type","uuid":"$t1"},{"content":)", 0,
     L"InputFileParsingException: Value not found in object\n"},
    {"bad token where an item starts", R"([{"content":"type","uuid":"$t1"},@])", 0,
     L"InputFileParsingException: Expected object\n"},
    {"number beyond the double range where an item starts",
     R"([{"content":"type","uuid":"$t1"},1e400])", 0,
     L"InputFileParsingException: Expected object\n"},
    {"bad token as an ignored member value", R"([{"content":"type","uuid":"$t1","x":@}])", 1,
     nullptr},
    {"number beyond the double range as an ignored member value",
     R"([{"content":"type","uuid":"$t1","x":-1e400,"desc":5}])", 1, nullptr},
    {"number beyond the double range in a header", R"([{"fileversion":1e999},[]])", 0,
     L"InputFileParsingException: Value not found in object\n"},
};

TEST(LoadGraphLibrary, SyntaxErrorInsideTheRootArrayLoadsWhatWasReadBeforeIt) {
  for (const PartialText& partial : partialTexts) {
    SCOPED_TRACE(partial.why);
    WideErrorCapture errors;
    LibraryHandle library;
    EXPECT_NO_THROW(library = loadLibrary(withUUIDs(partial.text)));
    if (partial.errorLine == nullptr) {
      EXPECT_NE(library, nullptr);
      EXPECT_EQ(library ? library->GetTypeCount() : 99, partial.typeCount);
      EXPECT_EQ(errors.text(), L"");
    } else {
      EXPECT_EQ(library, nullptr);
      EXPECT_EQ(errors.text(), partial.errorLine);
    }
  }
}

std::string nested(size_t levels, const std::string& open, const std::string& close) {
  std::string text;
  for (size_t i = 0; i < levels; ++i) text += open;
  for (size_t i = 0; i < levels; ++i) text += close;
  return text;
}

TEST(LoadGraphLibrary, NestingBeyond512LevelsIsRefusedBeforeItExhaustsTheStack) {
  const wchar_t* const tooDeep =
      L"InputFileParsingException: Nesting too deep: more than 512 levels\n";
  const struct {
    const char* why;
    std::string text;
    const wchar_t* errorLine;
  } deepTexts[] = {
      {"objects 100000 deep", "[" + nested(100000, R"({"a":)", "}") + "]", tooDeep},
      {"objects 513 deep", "[" + nested(512, R"({"a":)", "}") + "]", tooDeep},
      {"objects 512 deep", "[" + nested(511, R"({"a":)", "}") + "]",
       L"InputFileParsingException: Value not found in object\n"},
      {"open arrays 100000 deep", std::string(100000, '['), tooDeep},
      {"brackets inside strings do not count", "[\"" + std::string(2000, '{') + "\"]",
       L"InputFileParsingException: Expected object\n"},
      {"escaped quotes do not end a string",
       R"([{"content":"type","uuid":"","desc":"\"[[[[)" + std::string(600, '[') + "\"}]", L""},
  };
  for (const auto& deep : deepTexts) {
    SCOPED_TRACE(deep.why);
    WideErrorCapture errors;
    const LibraryHandle library = loadLibrary(deep.text);
    EXPECT_EQ(library != nullptr, deep.errorLine[0] == L'\0');
    EXPECT_EQ(errors.text(), deep.errorLine);
  }
}

const char* const baseText = R"([{"fileversion":1},[
    {"content":"type","uuid":"$t1","desc":"float"},
    {"content":"semantic","uuid":"$s1","desc":"roughness","type":"$t1"},
    {"content":"nodeclass","uuid":"$c1","desc":"constant",
     "input":[{"name":"value","type":"$t1"}],"output":[{"name":"out","type":"$t1"}]}]])";

// A child that only refers to its parent's types and semantics: it loads without the
// parent too, keeping the references it cannot resolve.
const char* const childText = R"([{"fileversion":1},[
    {"content":"type","uuid":"$t2","desc":"tagged","default":{"component":"semantic","value":"$s1"}},
    {"content":"semantic","uuid":"$s2","desc":"height","type":"$t1"},
    {"content":"nodeclass","uuid":"$c2","desc":"scale",
     "input":[{"name":"in","type":"$t1","default":{"component":"semantic","value":["$s1","$s2"]}}],
     "output":[{"name":"out","type":"$t1"}]}]])";

TEST(LoadGraphLibrary, ReferencesResolveThroughTheParentChainAndTheParentStaysAsItWas) {
  const LibraryHandle base = loadLibrary(withUUIDs(baseText), nullptr, "base");
  ASSERT_NE(base, nullptr);
  const std::string baseSaved = saveLibrary(*base);
  const LibraryHandle child = loadLibrary(withUUIDs(childText), base.get(), "child");
  ASSERT_NE(child, nullptr);
  const IType* parentType = base->GetType(0);
  EXPECT_EQ(child->FindSemanticByName("height")->GetType(), parentType);
  EXPECT_EQ(child->GetNodeClass(0)->GetInput(0)->GetType(), parentType);
  EXPECT_EQ(child->GetType(0)->GetDefault()->GetSemantic(0), base->GetSemantic(0));
  EXPECT_EQ(child->GetNodeClass(0)->GetInput(0)->GetDefault()->GetSemantic(1),
            child->GetSemantic(0));
  // A grandchild's graph uses node classes and semantics of both ancestors.
  const LibraryHandle grandchild = loadLibrary(withUUIDs(R"([
      {"content":"graph","uuid":"$g1","input":[{"name":"x","type":"$t1"}],
       "nodes":[{"uuid":"$n1","node":"$c1","input":[{"name":"value","from":["","x"]}]},
                {"uuid":"$n2","node":"$c2","input":[{"name":"in","from":["$n1","out"],
                 "default":{"component":"semantic","value":["$s2","$s1"]}}]}]}])"),
                                               child.get(), "grandchild");
  ASSERT_NE(grandchild, nullptr);
  const auto graph = grandchild->GetGraph(0);
  EXPECT_EQ(graph->GetNode(2)->GetNodeClass(), base->GetNodeClass(0));
  EXPECT_EQ(graph->GetNode(3)->GetNodeClass(), child->GetNodeClass(0));
  EXPECT_TRUE(graph->GetNode(3)->GetInputConnection(0, nullptr, nullptr));
  const IValue* nodeDefault = graph->GetNode(3)->GetInputDefault(0);
  ASSERT_NE(nodeDefault, nullptr);
  EXPECT_EQ(nodeDefault->GetSemantic(0), child->GetSemantic(0));
  EXPECT_EQ(nodeDefault->GetSemantic(1), base->GetSemantic(0));
  EXPECT_EQ(base->GetTypeCount() + base->GetSemanticCount() + base->GetNodeClassCount(), 3u);
  EXPECT_EQ(base->GetGraphCount(), 0u);
  EXPECT_EQ(saveLibrary(*base), baseSaved);
}

TEST(LoadGraphLibrary, ChildWithoutItsParentKeepsUnresolvedReferencesAndSavesThemBack) {
  const LibraryHandle base = loadLibrary(withUUIDs(baseText));
  ASSERT_NE(base, nullptr);
  const LibraryHandle withParent = loadLibrary(withUUIDs(childText), base.get());
  ASSERT_NE(withParent, nullptr);
  const std::string saved = saveLibrary(*withParent);
  const LibraryHandle orphan = loadLibrary(saved);
  ASSERT_NE(orphan, nullptr);
  EXPECT_EQ(orphan->FindSemanticByName("height")->GetType(), nullptr);
  EXPECT_EQ(orphan->GetNodeClass(0)->GetInput(0)->GetType(), nullptr);
  EXPECT_EQ(saveLibrary(*orphan), saved);
  // Loaded under the parent again, the references resolve once more.
  const LibraryHandle adopted = loadLibrary(saveLibrary(*orphan), base.get());
  ASSERT_NE(adopted, nullptr);
  EXPECT_EQ(adopted->GetNodeClass(0)->GetInput(0)->GetType(), base->GetType(0));
}

}  // namespace
}  // namespace mat
