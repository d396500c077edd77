// Tests without widgets.
#pragma once

#include "core.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include <dlfcn.h>
#include <sys/wait.h>
