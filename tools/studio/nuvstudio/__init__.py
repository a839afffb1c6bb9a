"""nuv studio: trains the segmenter's colour classes on a picture or a video in the browser."""
