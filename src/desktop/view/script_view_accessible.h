#pragma once

#include "desktop/view/block_index.h"

namespace dravenna {

class ScriptView;

// Screen readers see a ScriptView as a read-only text with the model's offsets.
void enableScriptViewAccessibility();

// Tells them what has changed; costs nothing while none is there.
void tellSelectionChange(ScriptView& view);
void tellTextChange(ScriptView& view, const BlockIndex::Change& change);

}  // namespace dravenna
