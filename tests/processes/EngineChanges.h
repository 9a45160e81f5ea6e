#pragma once

namespace test {

// Lets this process die, as by kill -9, while the engine makes its lvNth change (from 1) of a file from now
// on: a write, of which the first dvShare is still done, a truncation or a removal, of which nothing is.
void DieInChange(int lvNth, double dvShare);

}  // namespace test
