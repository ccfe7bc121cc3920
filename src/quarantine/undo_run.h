#pragma once

#include "base/step_progress.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"

namespace tidwen {

/// One undo of a manifest that is current, without locking or reading documents. The manifest is untrusted:
/// the safety policy checks every move. Blocks.
UndoReport undoItems(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest,
                     const ItemChoice& items, const StepControl& control);

/// What it would do. Changes nothing.
UndoPlan planUndo(UndoService::Ports& ports, const UserEnvironment& user, const Manifest& manifest,
                  const ItemChoice& items);

} // namespace tidwen
