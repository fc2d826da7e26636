#pragma once

#include "tests/support/test.h"
