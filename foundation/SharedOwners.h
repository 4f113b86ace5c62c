#pragma once

namespace tessel {

/// Counts the owners of a resource that objects share by value, so that the last of them frees it.
///
/// A resource has an entry only while it is shared: without an entry it has a single owner.
/// Any thread may call these functions.

/// Adds an owner.
/// @param resource  address or handle value
/// @return true: added; false: out of memory, and the new owner must not keep the resource
bool AddOwner(const void* resource);

/// Makes a copy an owner of what the original holds.
/// @param resource  address or handle that the original holds
/// @param none      value that means no resource, besides null
/// @return the resource; @p none when there is no memory to count the owner
template <class Resource> Resource* Share(Resource* resource, Resource* none = nullptr) {
    if (resource == nullptr || resource == none) return resource;
    return AddOwner(resource) ? resource : none;
}

/// Whether a resource has several owners.
/// @param resource  address or handle value
/// @return true: it has; false: one at most
bool IsShared(const void* resource);

/// Removes an owner.
/// @param resource  address or handle value
/// @return true: it was the last, which now frees the resource; false: others still hold it
bool RemoveOwner(const void* resource);

} // namespace tessel
