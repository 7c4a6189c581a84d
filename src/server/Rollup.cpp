#include "server/Rollup.h"

namespace kalvex::server {

void Extremes::Add(const StoredPoint& point) {
    Extremes one;
    if (point.form == PointForm::Number) {
        one.min = one.max = point.number;
        one.minTime = one.maxTime = point.time;
    } else {
        (point.form == PointForm::Text ? one.textTime : one.gapTime) = point.time;
    }
    Add(one);
}

void Extremes::Add(const Extremes& later) {
    if (later.minTime != kNoInstant && (minTime == kNoInstant || later.min < min)) {
        min = later.min;
        minTime = later.minTime;
    }
    if (later.maxTime != kNoInstant && (maxTime == kNoInstant || later.max > max)) {
        max = later.max;
        maxTime = later.maxTime;
    }
    if (later.textTime != kNoInstant) textTime = later.textTime;
    if (later.gapTime != kNoInstant) gapTime = later.gapTime;
}

void Rollup::Add(const StoredPoint& point) {
    ++count;
    extremes.Add(point);
    if (point.form != PointForm::Number) return;
    ++numbers;
    sum += point.number;
    last = point.number;
    lastTime = point.time;
}

}  // namespace kalvex::server
