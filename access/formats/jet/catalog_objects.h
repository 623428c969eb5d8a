// access/formats/jet/catalog_objects.h - objects of the catalog beside the tables of people, and
// the rights to all of them: what a new file has from the start, and what a damaged one may have
// lost.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "access/formats/jet/catalog.h"

namespace velnor::jet {

struct NewObject {
    std::string name;
    std::int32_t id = 0;  // tables: page of the definition
    std::int32_t parent = 0;
    int type = 0;
    std::uint32_t flags = 0;
    bool engines = false;  // the engine's own; else the administrator's
};

/// Adds a row to the catalog, without rights.
void addObject(Catalog& catalog, const NewObject& object);
/// Takes an object out, and the rights to it.
void removeObject(Catalog& catalog, std::int32_t id);

/// Adds the containers, the database object and the system tables that are not there; returns how
/// many there were.
int addMissingObjects(Catalog& catalog);
/// Whether a row of a damaged catalog contradicts what is the same in every file: it has the
/// number, or the name and container, of one of those objects, but is not that one.
bool contradictsStandard(std::int32_t id, std::int32_t parent, int type, std::string_view name);
/// Puts objects whose container is not there into the one for their kind, and takes out those of
/// which the kind has none here; returns how many went.
int containLostObjects(Catalog& catalog);
/// Takes out rights to objects that are not there.
void removeStrayRights(Catalog& catalog);
/// Gives rights to every object that has none, as programs give them; returns to how many.
int addMissingRights(Catalog& catalog);

}  // namespace velnor::jet
