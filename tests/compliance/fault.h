// SPDX-License-Identifier: BSD-3-Clause
#pragma once

/*! The ways in which the double can break the contract, one at a time. */
enum class Fault {
    None,
    // Cameras
    ManagerHangs,         // getNumberOfCameras() does not return
    ListingShuffles,      // another order each time
    ListingIsOpen,        // information on a camera beyond the last
    UnknownIdOpens,       // any id does
    HotPlugIsSilent,      // nobody is told
    HotPlugIsNotListed,   // told of, and never in the list
    CameraTellsOtherId,   // once it is open
    CameraHasNoFormat,    //
    CameraWrongSize,      // pictures are wider than was chosen
    CameraWrongRate,      // half of it
    CameraRefusesSetting, // the second one that it lists
    CameraTires,          // does not start for the tenth time
    CameraStaysStarted,   // says so once stopped
    CameraDeliversLate,   // one picture more, after stopCapture()
    CameraKeepsListener,  // calls it once it was taken away
    CameraYields,         // delivers nothing once another one runs
    CameraHangs,          // stopCapture() does not return
    CameraThrows,         // startCapture() does
    CameraThrowsLater,    // stopCapture() does, once it has stopped
    ListingCountsTooMany, // one more than there is information on
    // Codecs
    CodecsShuffle,     // another order each time
    CodecIsNameless,   //
    OthersArePromised, // codecs that are not listed
    OthersAreGiven,
    CodecsAreLimitless, // no fault: as many as a number can tell, of two of a kind
    // Encoders
    EncoderIsDenied,      // though listed and given
    EncoderRepeats,       // the picture before instead of number 5
    EncoderSkipsKeys,     // those that are requested
    EncoderMakesKeysOnly, //
    EncoderMislabelsKeys, // delta frames that are called key frames
    EncoderKeepsBitRate,  //
    EncoderIgnoresTurn,   //
    EncoderIgnoresMirror, //
    EncoderKeepsListener, // calls it once it was taken away
    EncoderKeepsPicture,  // for ever
    EncodersAreFewer,     // than listed
    EncoderRoundsStamps,  // to milliseconds
    EncoderTakesNoSize,   // a configuration for pictures of 0x0
    EncoderTakesAnything, // before it is configured
    EncoderBreaks,        // for good, after a picture without a size
    EncoderThrows,        // when its listener is taken away
    RgbIsRefused,         // every picture
    RgbIsSwapped,         // red and blue
    RgbIsLost,            // from number 3 on, though taken
    RgbIsKept,            // for ever
    RgbHasNoTime,         // 0 as a time stamp
    RgbSkipsKeys,         // those that are requested
    // Decoders
    DecoderIsDenied,
    DecoderRepeats,       // the picture before instead of number 5
    DecoderDrainLoses,    // what is inside
    DecoderFlushPutsOut,  // what is inside, a moment later
    DecoderKeepsListener, // calls it once it was taken away
    DecoderReleasesTwice, //
    DecoderKeepsBlock,    // of number 5
    DecoderKeepsRefused,  // blocks
    DecodersAreFewer,     //
    DecoderRoundsStamps,  //
    DecoderTakesOthers,   // a configuration for another codec
    DecoderIsSilent,      // about bytes that are no frame
    DecoderShowsGarbage,  // as a picture
    DecoderBreaks,        // for good, after bytes that are no frame
    DecoderThrows,        // when it is stopped
    DecoderLosesGood,     // three frames after bytes that are no frame, key frames among them
    DecoderStaysLost,     // after bytes that are no frame in the middle of a stream
    DecoderDropsInside,   // what is inside, when bytes come that are no frame
    DecoderAwaitsKey,   // no fault: refuses frames after bytes that are no frame until a key frame
    DecodersAreMissing, // no fault: encoders alone
};
