namespace loftmere {}
