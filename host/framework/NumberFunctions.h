// The global functions for numbers, bits, colours, variants and time, and the class Random.
#pragma once

namespace host {

class Runtime;

// At least 0, below 1; another sequence in every process.
double Rnd();

void RegisterNumberFunctions(Runtime& runtime);
void RegisterBitFunctions(Runtime& runtime);
void RegisterColorFunctions(Runtime& runtime);
void RegisterVariantFunctions(Runtime& runtime);
void RegisterRandom(Runtime& runtime);

}  // namespace host
