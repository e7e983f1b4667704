#pragma once

#include "Platform/Fennix/Dir.h"

/// The entity types that a directory can create by name: "Orm::Dir", and those that were
/// registered; any other name makes a Node. Types are registered at load time and stay.
namespace Fennix::TypeRegistry {

using Factory = Orm::Ptr<Orm::Entity> (*)(const Dir& parent, const Orm::String& name);

void typeIs(const char* typeName, Factory factory);

/// A new entity of the type, not yet in the directory.
Orm::Ptr<Orm::Entity> create(const Orm::String& typeName, const Dir& parent,
                             const Orm::String& name);

}  // namespace Fennix::TypeRegistry
