// libc++ asks for Android's <xlocale.h>; of the stand-in C library <locale.h> declares the same.
#pragma once
#include <locale.h>
