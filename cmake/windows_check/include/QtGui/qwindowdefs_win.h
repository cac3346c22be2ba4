#pragma once

// Only a Qt for Windows comes with this header.
#include <windows.h>
