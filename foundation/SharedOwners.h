#pragma once

namespace tessel {

/// Counts who holds a resource that objects share by value, so that the last of them frees it.
///
/// A resource is entered only once it is shared: one without an entry has a single owner.
/// Any thread may call these functions.

/// Notes one more owner.
/// @param resource  address or handle value
/// @return true: noted; false: no memory, the new owner must not keep the resource
bool AddOwner(const void* resource);

/// Makes a copy one more owner.
/// @param resource  what the copied object has; may be null
/// @return the resource; null: there is none, or no memory to note the owner
template <class Resource> Resource* Share(Resource* resource) {
    return resource != nullptr && AddOwner(resource) ? resource : nullptr;
}

/// Whether others hold the resource too.
/// @param resource  address or handle value
/// @return true: it has several owners; false: one at most
bool IsShared(const void* resource);

/// Takes one owner away.
/// @param resource  address or handle value
/// @return true: it was the last, which now frees the resource; false: others still hold it
bool RemoveOwner(const void* resource);

} // namespace tessel
