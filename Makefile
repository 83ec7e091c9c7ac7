# Builds the engine with make and a compiler alone, for people who only know `make` and for OpenBench:
#
#   make                                the program `brenquil` in this folder
#   make EXE=name CXX=clang++ -j4       another name, another compiler, four jobs
#   make bench                          builds it and prints its bench signature
#   make clean                          removes what was built
#   make help                           this text
#
# It is the portable build of the preset `release` of CMakePresets.json, which is what developers use: CMake knows the
# tests and the packages as well. Needs GNU make 4.2 and a compiler for C++20; Linux or Windows (MinGW). Objects lie in
# build/make/COMPILER/.

EXE ?= brenquil
ifeq ($(origin CXX),default)
    CXX := g++
endif

# Folders below src/ up to the third level; other programs have their own main function and build files.
OTHER_PROGRAMS := src/tables/%
ALL_SOURCES := $(filter-out $(OTHER_PROGRAMS),\
    $(wildcard src/*/*.cpp) $(wildcard src/*/*/*.cpp) $(wildcard src/*/*/*/*.cpp))

# As in cmake/brenquil_room.cmake: the end of a name says for which system or processor a source is.
MACHINE := $(shell $(CXX) -dumpmachine)
ifeq ($(MACHINE),)
    $(error The compiler '$(CXX)' does not run; name another one: make CXX=...)
endif
LEFT_OUT := %_web.cpp %_single.cpp
ifneq (,$(findstring mingw,$(MACHINE)))
    LEFT_OUT += %_linux.cpp
    SUFFIX := .exe
    LDFLAGS_SYSTEM := -static
else
    LEFT_OUT += %_windows.cpp
    CXXFLAGS_SYSTEM := -fno-pie
    # With the libraries inside the program starts sooner, see src/interface/CMakeLists.txt; not everybody has them.
    HASH := \#
    STATIC := $(shell printf '%s\n' '$(HASH)include <thread>' '$(HASH)if defined(__GLIBC__) && !__GLIBC_PREREQ(2, 34)' \
        '$(HASH)error' '$(HASH)endif' 'int main() { std::thread([] {}).join(); }' | \
        $(CXX) -static -x c++ - -o /dev/null 2>/dev/null && echo -static)
    LDFLAGS_SYSTEM := $(or $(STATIC),-no-pie)
endif
ifneq (,$(findstring x86_64,$(MACHINE)))
    LEFT_OUT += %_generic.cpp
else
    LEFT_OUT += %_x86.cpp
endif
SOURCES := $(filter-out $(LEFT_OUT),$(ALL_SOURCES))

# The version is in CMakeLists.txt and nowhere else.
BRACKET := (
VERSION := $(patsubst version=%,%,$(filter version=%,\
    $(subst project$(BRACKET)brenquil VERSION ,version=,$(file <CMakeLists.txt))))

# Optimising across the sources: GCC does it with any linker, Clang with its own one.
ifneq (,$(findstring clang,$(CXX)))
    LTO := $(shell echo 'int main() {}' | $(CXX) -flto=thin -fuse-ld=lld -x c++ - -o /dev/null 2>&1 || echo no)
    LTO := $(if $(LTO),,-flto=thin)
    LDFLAGS_LTO := $(if $(LTO),$(LTO) -fuse-ld=lld)
else
    LTO := -flto=auto -fno-fat-lto-objects
    LDFLAGS_LTO := $(LTO)
endif

CXXFLAGS ?= -O2 -fno-tree-vectorize -fno-tree-slp-vectorize
override CXXFLAGS += -std=c++20 -DNDEBUG -Isrc -DBRENQUIL_VERSION='"$(VERSION)"' -pthread -MMD -MP \
    -ffp-contract=off -fvisibility=hidden -fvisibility-inlines-hidden $(CXXFLAGS_SYSTEM) $(LTO)
override LDFLAGS += -pthread $(LDFLAGS_SYSTEM) $(LDFLAGS_LTO)

FOLDER := build/make/$(notdir $(firstword $(CXX)))
OBJECTS := $(SOURCES:src/%.cpp=$(FOLDER)/%.o)
PROGRAM := $(EXE:$(SUFFIX)=)$(SUFFIX)

all: $(PROGRAM)

$(PROGRAM): $(OBJECTS)
	$(CXX) $(CXXFLAGS) $(LDFLAGS) $(OBJECTS) -o $@

$(FOLDER)/%.o: src/%.cpp Makefile CMakeLists.txt
	@mkdir -p $(dir $@)
	$(CXX) $(CXXFLAGS) -c $< -o $@

bench: $(PROGRAM)
	$(abspath $(PROGRAM)) bench

clean:
	rm -rf build/make $(PROGRAM)

help:
	@sed -n '2,/^$$/s/^# \{0,1\}//p' Makefile

-include $(OBJECTS:.o=.d)

.PHONY: all bench clean help
.DELETE_ON_ERROR:
