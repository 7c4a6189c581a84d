// Handlers of the keyword functions by family; the function table of language/ names them.
#pragma once

#include "operands/KeywordFunction.h"

namespace kalvex::operands {

// Texts
FunctionResult StringCompare(FunctionCall& call);
FunctionResult StringCompareNoCase(FunctionCall& call);
FunctionResult StringFindOneOf(FunctionCall& call);
FunctionResult StringReverseFind(FunctionCall& call);
FunctionResult StringFind(FunctionCall& call);
FunctionResult ToStringFunction(FunctionCall& call);
FunctionResult ToFloat(FunctionCall& call);
FunctionResult ToInt(FunctionCall& call);
FunctionResult StringLen(FunctionCall& call);
FunctionResult StringMakeLower(FunctionCall& call);
FunctionResult StringMakeReverse(FunctionCall& call);
FunctionResult StringMakeUpper(FunctionCall& call);
FunctionResult StringAppend(FunctionCall& call);
FunctionResult StringSpanExcluding(FunctionCall& call);
FunctionResult StringSpanIncluding(FunctionCall& call);
FunctionResult StringTrim(FunctionCall& call);
FunctionResult StringTrimLeft(FunctionCall& call);
FunctionResult StringTrimRight(FunctionCall& call);
FunctionResult StringLeft(FunctionCall& call);
FunctionResult StringRight(FunctionCall& call);
FunctionResult StringMid(FunctionCall& call);
FunctionResult Tokenize(FunctionCall& call);
FunctionResult Join(FunctionCall& call);

// Mathematics
FunctionResult Sine(FunctionCall& call);
FunctionResult Cosine(FunctionCall& call);
FunctionResult Tangent(FunctionCall& call);
FunctionResult Cotangent(FunctionCall& call);
FunctionResult ArcSine(FunctionCall& call);
FunctionResult ArcCosine(FunctionCall& call);
FunctionResult ArcTangent(FunctionCall& call);
FunctionResult ArcCotangent(FunctionCall& call);
FunctionResult Square(FunctionCall& call);
FunctionResult SquareRoot(FunctionCall& call);
FunctionResult Factorial(FunctionCall& call);
FunctionResult IntegerPart(FunctionCall& call);
FunctionResult Round(FunctionCall& call);

// Status words and users
FunctionResult StatusFunction(FunctionCall& call);
FunctionResult SetStatusFunction(FunctionCall& call);
FunctionResult AddStatusFunction(FunctionCall& call);
FunctionResult RemoveStatusFunction(FunctionCall& call);
FunctionResult SorvaneUserName(FunctionCall& call);
FunctionResult SorvaneUserDescription(FunctionCall& call);
FunctionResult WindowsUserName(FunctionCall& call);

// Time and schedule
FunctionResult LastDay(FunctionCall& call);
FunctionResult TimestampFunction(FunctionCall& call);
FunctionResult FormatedTimestamp(FunctionCall& call);
FunctionResult MakeTime(FunctionCall& call);
FunctionResult MakeTimeFromString(FunctionCall& call);
FunctionResult CheckEventTimeFunction(FunctionCall& call);

// Lists
FunctionResult FillInListFunction(FunctionCall& call);
FunctionResult CalcInListFunction(FunctionCall& call);

}  // namespace kalvex::operands
