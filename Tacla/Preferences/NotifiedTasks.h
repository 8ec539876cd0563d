#pragma once

#include <map>
#include <string>
#include <vector>

// The notified list: identifiers ("key@2025-03-04 14:30") of the reminders that were shown or must never be.
namespace tacla::NotifiedTasks {

// Entries of a renamed task get its new key.
std::vector<std::string> rekeyed(std::vector<std::string> notified, const std::map<std::string, std::string>& newKeys);

}
