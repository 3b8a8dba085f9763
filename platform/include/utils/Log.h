#pragma once

#include <log/log.h>
