#pragma once

#include "Tacla/TaskList/TaskFile.h"

#include <string>
#include <vector>

// The notified list: identifiers ("key@2025-03-04 14:30") of the reminders that were shown or must never be.
namespace tacla::NotifiedTasks {

using Notified = std::vector<std::string>;

// Entries of a renamed task get its new key.
Notified rekeyed(const Notified&, const NewKeys&);

// Or keep the old one as well: while the file is renamed, another process may look at it before or after.
Notified underBothKeys(const Notified&, const NewKeys&);

}
