// A merge patch on a document: both in one text, with a line "---" between them; without that line
// the patch is on a document that has something of everything.

#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Merge.h"
#include "Fabric/Model.h"
#include "Fabric/Reader.h"
#include "Fuzz/BoundedRun.h"
#include "Fuzz/Property.h"
#include "Fuzz/Trees.h"

namespace {

using Fabric::Block;
using Fabric::Model;
using Fabric::Object;
using Fabric::Value;
using nlohmann::json;

constexpr const char* kFile = "patch.yaml";
constexpr std::string_view kBetween = "\n---\n";
constexpr std::array<Block, Fabric::kBlockCount> kBlocks = {
    Block::controller, Block::entities, Block::attrlog, Block::services, Block::switches};

constexpr std::string_view kBase = R"(
controller: {leader: gen-1, heartbeat: 1}
entities: {/c/a: "A::A", /c/d: "Orm::Dir"}
attrlog: {standby: {sync: 1}}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {T: 3, B: 1}}
  "02:00:00:00:00:02": {name: leaf2, connected: true, services: {T: 4}, mount: {outcome: failed}}
  "02:00:00:00:01:00": {count: 3, name: "spine{n}", services: {T: {version: 3, negotiated: false}}}
services:
  T:
    mount:
      generation: gen-1
      groups:
        g: {versions: [3, 4], systems: ["02:00:00:00:00:01"], paths: {t/s: {type: "T::S", flags: r}}}
        h: {preserve: true, paths: {t/c: {type: "T::C"}}}
    publish:
      generation: gen-1
      ready: true
      groups: {g: {paths: {/c/a: {remote: a, type: "A::A"}}, dirs: {/c/d: {remote: d, type: "D::D"}}}}
  B: {proxy: true, mount: {generation: gen-1, groups: {g: {paths: {b/s: {type: "B::S"}}}}}}
)";

std::optional<Value> smallTree(std::string_view text) {
  try {
    const Value tree = Fabric::read(kFile, text);
    return Fuzz::isSmall(tree) ? std::optional(tree) : std::nullopt;
  } catch (const Fabric::InputError&) {
    return std::nullopt;
  }
}

/// A tree merged into another, against another library's merging.
void requireMerge(const Value& target, const Value& patch) {
  Value merged = target;
  Fabric::merge(merged, patch);
  json expected = Fuzz::jsonOf(target);
  expected.merge_patch(Fuzz::jsonOf(patch));
  Fuzz::require(Fuzz::jsonOf(merged) == expected, "a merge patch does what RFC 7396 says",
                Fabric::toJson(merged));
}

std::string textOf(const Model& model) {
  std::string text;
  for (const Block block : kBlocks) text += Fabric::toJson(Value(model.block(block))) + '\n';
  return text;
}

/// Every member that a step changes is merged with it, and no other is touched.
void requireApplied(Model& model, const Fabric::Patch& patch) {
  for (const Fabric::Step& step : patch.steps) {
    for (const Fabric::Text& key : *step.keys) {
      const bool isBlock = step.block == Block::controller;
      const Value before = model.apply(step, key);
      const Value* after = isBlock ? nullptr : model.find(step.block, *key);
      const Value now = isBlock ? Value(model.block(step.block)) : after ? *after : Value();
      Value expected = before;
      Fabric::merge(expected, step.patch);
      const bool isEmptied = isBlock && step.patch.isNull();
      Fuzz::require(now == (isEmptied ? Value(Object()) : expected), "a step merges its member",
                    Fabric::toJson(now));
    }
  }
}

/// The document with the patch as its one event.
std::string withEvent(const Value& base, const Value& patch) {
  Object event;
  event.set(Fabric::makeText("at"), {}, Value(1.0));
  event.set(Fabric::makeText("apply"), {}, patch);
  Value document = base;
  document.mutableObject().set(Fabric::makeText("events"), {},
                               Value(Value::Array{Value(std::move(event))}));
  return Fabric::toJson(document);
}

void judge(const Value& base, const Value& patch, std::string_view patchText) {
  std::optional<Fabric::Document> start;
  try {
    start = Fabric::Document::parse("base.json", Fabric::toJson(base));
  } catch (const Fabric::InputError&) {
    return;
  }
  Model model = start->start();
  const std::string before = textOf(model);
  std::optional<std::string> complaint;
  try {
    const Fabric::Patch resolved = model.resolve(kFile, patch);
    Fuzz::require(textOf(model) == before, "resolving changes nothing", before);
    requireApplied(model, resolved);
  } catch (const Fabric::InputError& error) {
    Fuzz::requirePlace(error.what(), kFile, patchText);
    complaint = error.text();
  }
  if (patch.isNull()) return;  // of an event, the same as none
  const std::string whole = withEvent(base, patch);
  try {
    const auto document = Fabric::Document::parse("whole.json", whole);
    Fuzz::require(!complaint.has_value(), "a patch that is refused is refused as an event", whole);
    Fuzz::runBounded(document);
  } catch (const Fabric::InputError& error) {
    Fuzz::require(complaint == error.text(), "an event is judged as its patch is", error.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  const std::size_t between = text.find(kBetween);
  const bool isBoth = between != std::string_view::npos;
  const std::string_view patchText = isBoth ? text.substr(between + kBetween.size()) : text;
  const auto patch = smallTree(patchText);
  if (!patch) return 0;
  const auto base = smallTree(isBoth ? text.substr(0, between) : kBase);
  if (!base) return 0;
  requireMerge(*base, *patch);
  if (base->isObject()) judge(*base, *patch, patchText);
  return 0;
}
