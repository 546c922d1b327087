#include "sibling.h"

int vnTestSiblingAnswer(int question)
{
    return question + 1;
}
