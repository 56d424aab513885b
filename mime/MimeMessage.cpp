#include <vqxml/mime/MimeEntity.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

const char* const s_DayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const s_MonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Minutes east of UTC at that instant, from the local and UTC broken-down times.
int ZoneOffsetMinutes(const std::tm& local, const std::tm& utc) {
    int days = local.tm_mday - utc.tm_mday;
    if (days >= 2)
        days = -1;  // local is on the 1st, UTC at the end of the previous month
    else if (days < -1)
        days = 1;
    return days * 1440 + 60 * (local.tm_hour - utc.tm_hour) + (local.tm_min - utc.tm_min);
}

}  // namespace

CMimeMessage::~CMimeMessage() = default;

void CMimeMessage::SetDate() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    if (!localtime_r(&now, &local))
        return;
    SetDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
            local.tm_sec);
}

void CMimeMessage::SetDate(int year, int month, int day, int hour, int minute, int second) {
    std::tm broken{};
    broken.tm_year = year - 1900;
    broken.tm_mon = month - 1;
    broken.tm_mday = day;
    broken.tm_hour = hour;
    broken.tm_min = minute;
    broken.tm_sec = second;
    broken.tm_isdst = -1;
    std::time_t instant = std::mktime(&broken);
    if (instant < 0)
        return;
    std::tm local{};
    std::tm utc{};
    if (!localtime_r(&instant, &local) || !gmtime_r(&instant, &utc))
        return;
    int offset = ZoneOffsetMinutes(local, utc);
    int absOffset = std::abs(offset);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d %c%02d%02d",
                  s_DayNames[local.tm_wday], local.tm_mday, s_MonthNames[local.tm_mon],
                  local.tm_year + 1900, local.tm_hour, local.tm_min, local.tm_sec,
                  offset < 0 ? '-' : '+', absOffset / 60, absOffset % 60);
    SetFieldValue("Date", text, nullptr);
}
