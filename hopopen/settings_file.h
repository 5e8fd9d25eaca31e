#pragma once
#include "settings_edit.h"
namespace hopopen {
std::string changeSettings(const std::string& path, const change& wanted);
}
