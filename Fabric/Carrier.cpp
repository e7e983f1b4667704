#include "Fabric/Carrier.h"

namespace Fabric {

namespace {

constexpr Block kBlocks[] = {Block::controller, Block::entities, Block::attrlog, Block::services,
                             Block::switches};

Value valueAfter(const Model& model, Block block, const Text& key) {
  if (block == Block::controller) return Value(model.block(block));
  const Value* after = model.find(block, *key);
  return after == nullptr ? Value() : *after;
}

}  // namespace

Carrier::Carrier(const World& world, MountSimulation& mounts)
    : controller_(world),
      entities_(world),
      attrlog_(mounts.clock()),
      services_(world),
      switches_(world, mounts) {}

void Carrier::start(const Model& model) {
  for (const Block block : kBlocks) {
    if (block == Block::controller) {
      const Value controller(model.block(block));
      carry(block, makeText(""), Value(), controller, controller);
      continue;
    }
    for (const Object::Member& member : model.block(block)) {
      carry(block, member.key, Value(), member.value, member.value);
    }
  }
}

void Carrier::apply(Model& model, const Patch& patch) {
  for (const Step& step : patch.steps) {
    for (const Text& key : *step.keys) {
      const Value before = model.apply(step, key);
      carry(step.block, key, before, valueAfter(model, step.block, key), step.patch);
    }
  }
}

void Carrier::carry(Block block, const Text& key, const Value& before, const Value& after,
                    const Value& patch) {
  switch (block) {
    case Block::controller:
      return controller_.carry(after, patch);
    case Block::entities:
      return entities_.carry(*key, before, after);
    case Block::attrlog:
      return attrlog_.carry(*key, before, after, patch);
    case Block::services:
      return services_.carry(key, before, after, patch);
    case Block::switches:
      return switches_.carry(key, before, after, patch);
  }
}

}  // namespace Fabric
