// The process's time zone for as long as the object lives, as the variable TZ writes it ("EAST-5:30").
#pragma once

#include <cstdlib>
#include <ctime>

namespace tallybook::testing {

class TimeZone {
 public:
  explicit TimeZone(const char* zone) { Set(zone); }
  ~TimeZone() {
    ::unsetenv("TZ");
    ::tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

  void Set(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
};

}  // namespace tallybook::testing
