// sensorctl's own output. Results go to standard output; errors go to standard
// error after standard output is flushed, so the two stay in order when both
// reach one terminal or one file. The module's traces are not touched: they go
// to standard output as the module prints them.
#pragma once

void say(const char* p_szFormat, ...) __attribute__((format(printf, 1, 2)));
void complain(const char* p_szFormat, ...) __attribute__((format(printf, 1, 2)));
