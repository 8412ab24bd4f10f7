#pragma once

#include <string>
#include <string_view>

#include "authoring/catalog.h"
#include "authoring/schema.h"

// The pieces that several rows of the catalog share, each defined once. A fragment that takes a
// base gives back a copy of it with its own fields behind.
namespace zorvik::authoring {

// Makes a row. `output_description` names in words the members that the tool adds to its answer.
ToolSpec Tool(const char* name, const char* operation, const char* title, ToolKind kind,
              std::string description, const Schema& input, std::string_view output_description,
              bool local = false);

// The output schema that all rows share; only its description differs.
Schema Envelope(std::string_view description);

// The field `editor_id`.
Schema EditorId();
// The fields `cursor` and `limit` of the paged reading tools.
Schema Cursor();
Schema Limit();

// The six fields of a document change; closes the object.
Schema Mutation(Schema base);

// A rectangle on the ground.
Schema Bounds(std::string_view description);
// A circle in plan.
Schema Near();
Schema Point2();
// Three optional components.
Schema Vec3(std::string_view description);

// Brush strokes: `sculpt` for the terrain, otherwise for painting.
Schema Strokes(bool sculpt);
Schema Polygon();

// The fields of a placed object. `create` makes asset, x and z required.
Schema ObjectFields(Schema base, bool create);
// How an asset is compiled.
Schema AssetCompileFields(Schema base);
// What shapes a building.
Schema BuildingFields(Schema base);

}  // namespace zorvik::authoring
