// The C library's time zone.
#include "TimeZone.h"

#include "FilesFaults.h"

#include <cstdlib>
#include <sys/stat.h>

bool zoneOffsetAt(time_t when, long &offset) {
  struct tm local;
  if (localtime_r(&when, &local) == nullptr)
    return false;
  offset = local.tm_gmtoff;
  return true;
}

time_t localFieldsToSeconds(struct tm fields) {
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

time_t utcFieldsToSeconds(struct tm fields) {
  return timegm(&fields);
}

void readTimeZone() {
  tzset();
}

ZoneSource ZoneSource::now() {
  ZoneSource source;
  const char *text = std::getenv("TZ");
  source.set = text != nullptr;
  if (source.set) {
    source.text = text;
    return source;
  }
  struct stat status;
  if (!injectedFailure(FileOperation::StatPath) && ::stat("/etc/localtime", &status) == 0) {
    source.device = status.st_dev;
    source.inode = status.st_ino;
    source.written = status.st_mtime;
  }
  return source;
}

bool ZoneSource::operator==(const ZoneSource &other) const {
  return set == other.set && text == other.text && device == other.device && inode == other.inode &&
         written == other.written;
}
