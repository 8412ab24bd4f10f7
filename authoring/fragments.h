#pragma once

#include <string>
#include <string_view>

#include "authoring/catalog.h"
#include "authoring/schema.h"

// The pieces that several rows of the catalog share, each defined once. A fragment that takes a
// base returns a copy of it with the fragment's fields at the end.
namespace zorvik::authoring {

// The closing sentence of a row whose call changes everything or nothing.
inline constexpr const char* kAllOrNothing =
    "Uma transacao: se qualquer item for invalido, nada e aplicado e o erro diz qual.";
// The closing sentence of the generators that turn stored parameters into content.
inline constexpr const char* kRunsAsJob =
    "Roda como job: espera ate wait_ms e devolve o resultado, ou devolve job_id para jobs_get; ao "
    "aplicar, confere o que a pessoa mudou nos mesmos elementos enquanto calculava (conflict).";

// Makes a row. Its operation has the same name with a dot in the place of the first underscore.
// `output_description` says in words which members the tool adds to its answer.
ToolSpec Tool(const char* name, const char* title, ToolKind kind, std::string description,
              const Schema& input, std::string_view output_description, bool local = false);

// The output schema that all rows share; only its description differs.
Schema Envelope(std::string_view description);

// How an input starts and ends. A row is one of these four:
//   Mutation(Schema::Object("").Field(...))   a document change: its own fields in front
//   EditorAction(ForEditor().Field(...))      changes something, with no transaction to undo
//   ForEditor().Field(...).Closed()           everything else that needs an editor
//   Schema::Object("").Closed()               no editor at all

// An input with the field `editor_id` in front, open for the row's own fields.
Schema ForEditor();
// The six fields of a document change; closes the object.
Schema Mutation(Schema base);
// `request_id` and `wait_ms`, both without a description; closes the object.
Schema EditorAction(Schema base);

// The field `editor_id`.
Schema EditorId();
// The fields `cursor` and `limit` of the paged reading tools.
Schema Cursor();
Schema Limit();

// An id that the editor gave: an integer from 1.
Schema Id(std::string_view description);
// 1 to `max_items` of them.
Schema Ids(int max_items, std::string_view description);
// The seed of a generator: an unsigned 32-bit integer.
Schema Seed(std::string_view description);
// A color: a list of exactly three components.
Schema Rgb(Schema component, std::string_view description);

// A rectangle on the ground.
Schema Bounds(std::string_view description);
// A circle on the ground.
Schema Near();
Schema Point2();
// A vector, of which each component may be missing.
Schema Vec3(std::string_view description);
// The body of somebody who walks.
Schema Body(std::string_view description);

// Brush strokes, which either sculpt the terrain or paint on it.
Schema Strokes(bool sculpt);
Schema Polygon();

// The fields of a placed object. `create` makes asset, x and z required.
Schema ObjectFields(Schema base, bool create);
// How an asset is compiled.
Schema AssetCompileFields(Schema base);
// What a building looks like.
Schema BuildingFields(Schema base);

}  // namespace zorvik::authoring
