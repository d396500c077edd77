#include "ulodb2.h"
