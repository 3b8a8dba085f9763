#pragma once

// In the private part of a class: it is neither copied nor assigned.
#define DISALLOW_EVIL_CONSTRUCTORS(name) \
    name(const name&) = delete;          \
    name& operator=(const name&) = delete
