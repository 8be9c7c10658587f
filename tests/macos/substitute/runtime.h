#pragma once

#include <map>
#include <string>

namespace quil::substitute {

/// How many objects of each class live now; classes without any are left out. Blocks on the heap
/// count as "Block".
std::map<std::string, long> liveObjects();
/// Takes the object out of that count.
void noteSingleton(const void* object);

/// A rule of the platform's documentation was broken: says so on standard error and ends the
/// process, as the platform itself might.
[[noreturn]] void violation(const std::string& what);

}  // namespace quil::substitute
