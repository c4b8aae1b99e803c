// libc++ includes it on Android; the API level itself comes from the target triple.
#pragma once
