#pragma once

#include <vector>

#include "authoring/catalog.h"

// The rows of the catalog, one family a file. Each function appends its rows in catalog order; the
// families themselves stand here in that order too. What several rows share comes from fragments.h:
// see there before writing a field anew.
namespace zorvik::authoring {

void AppendReadingTools(std::vector<ToolSpec>& tools);   // editor_list to water_list
void AppendAssetTools(std::vector<ToolSpec>& tools);     // assets_list to assets_compose
void AppendObjectTools(std::vector<ToolSpec>& tools);    // objects_create to _duplicate
void AppendTerrainTools(std::vector<ToolSpec>& tools);   // terrain_sculpt to vegetation_paint
void AppendWaterTools(std::vector<ToolSpec>& tools);     // water_upsert to world_save
void AppendRoadTools(std::vector<ToolSpec>& tools);      // roads_list to scatter_run
void AppendBuildingTools(std::vector<ToolSpec>& tools);  // buildings_kit_install to doors_configure
void AppendInspectionTools(std::vector<ToolSpec>& tools);        // inspect_walk to inspect_validate
void AppendPartitionedWorldTools(std::vector<ToolSpec>& tools);  // world_open to quality_set
void AppendHistoryTools(std::vector<ToolSpec>& tools);           // history_list to batch_apply

}  // namespace zorvik::authoring
