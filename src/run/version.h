// The program's name and version, as it prints them.
#pragma once

// The number comes from the build, which has it in one place.
#ifndef ZANVIK_VERSION
#error "ZANVIK_VERSION is to be defined by the build"
#endif

#define ZANVIK_VERSION_TEXT "ver: " ZANVIK_VERSION
#define ZANVIK_TITLE "zanvik " ZANVIK_VERSION_TEXT
