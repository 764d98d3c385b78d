#pragma once

#include "output/Text.h"
