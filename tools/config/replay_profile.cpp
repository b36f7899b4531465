#include "tools/config/replay_profile.h"

char* replay_profile = nullptr;
char* replay_profile_dir = nullptr;
