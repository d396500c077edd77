#pragma once

#include "ZTASK_ENG_Model.h"

// The store with what subclasses may use made public.
class Store : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};
