#include "platform/VideoStreamModule.h"

VideoStreamModule::~VideoStreamModule() = default;
