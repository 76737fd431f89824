# corvane_flags: everything our own code is compiled and linked with. Imported libraries are not touched by it.
add_library(corvane_flags INTERFACE)

target_compile_features(corvane_flags INTERFACE cxx_std_20)
target_compile_options(corvane_flags INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Werror
    -Wshadow
    -Wconversion
    -Wsign-conversion
    -Wold-style-cast
    -Woverloaded-virtual
    -Wcast-align
    -Wcast-qual
    -Wformat=2
    -Wimplicit-fallthrough
    -Wunused
    -Wvla
    -fstack-protector-strong
)
target_link_options(corvane_flags INTERFACE -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(corvane_flags INTERFACE
        -Wduplicated-cond
        # GCC 12 sees overlaps in std::string's own operators (its bug 105329).
        -Wno-restrict
        -Wduplicated-branches
        -Wlogical-op
    )
endif()

configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in ${CMAKE_BINARY_DIR}/generated/core/version.h @ONLY)
target_include_directories(corvane_flags INTERFACE
    ${PROJECT_SOURCE_DIR}/src
    ${CMAKE_BINARY_DIR}/generated
)

if(WIN32)
    # 0x0601: Windows 7 is the oldest system the product runs on.
    target_compile_definitions(corvane_flags INTERFACE
        WINVER=0x0601
        _WIN32_WINNT=0x0601
        NTDDI_VERSION=0x06010000
        UNICODE
        _UNICODE
        WIN32_LEAN_AND_MEAN
        NOMINMAX
        STRICT
        # winnt.h includes the intrinsics of every processor there is, two thirds of what <windows.h> gives the
        # compiler to read. These are the guards of that header, GCC's and clang's; who uses an intrinsic includes
        # its own header.
        _X86INTRIN_H_INCLUDED
        __X86INTRIN_H
        # crypt32, comdlg32 and shell32: so that the headers declare their functions as any other, not as imported. Calls
        # through the import table alone do not keep the code that loads a library late when the linker drops what is
        # not called (32 bits).
        WINIMPM=
        _COMDLG32_
        _SHELL32_
    )
    # The runtime is linked statically: a script host loads the DLL from a folder where nothing else of ours lies.
    # No time stamp in the image: the same sources give the same file (tools/reproduce).
    # Of the C++ library and of data nothing stays that nobody refers to. Functions of ours are not put into sections of
    # their own for it: the linker keeps all unwinding tables, and these refer to every function.
    target_link_options(corvane_flags INTERFACE
        -static
        -Wl,--gc-sections
        -Wl,--dynamicbase
        -Wl,--nxcompat
        -Wl,--no-insert-timestamp
    )
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        target_link_options(corvane_flags INTERFACE -Wl,--high-entropy-va)
    else()
        # Every processor that Windows 7 still got updates for has SSE2. Hosts built by other compilers call us with a
        # stack aligned to 4 bytes, where SSE code needs 16.
        target_compile_options(corvane_flags INTERFACE -msse2 -mfpmath=sse -mstackrealign)
        # The .def file names exports plainly, the symbols carry the size of their arguments.
        target_link_options(corvane_flags INTERFACE -Wl,--enable-stdcall-fixup)
    endif()
endif()

if(CORVANE_SANITIZE)
    target_compile_options(corvane_flags INTERFACE
        -fsanitize=address,undefined
        -fno-sanitize-recover=all
        -fsanitize=fuzzer-no-link
        -fno-omit-frame-pointer
    )
    target_link_options(corvane_flags INTERFACE -fsanitize=address,undefined)
endif()
